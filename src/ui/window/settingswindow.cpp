#include "settingswindow.h"

#include "app/appmodel.h"
#include "app/preferences.h"
#include "progress/progressstore.h"
#include "screens/runnerstatus.h"
#include "texts/texts.h"
#include "theme/roundedpanel.h"
#include "theme/theme.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include <cmath>

namespace Kestrun {

namespace {

// A titled group of the form, on a rounded backdrop, as grouped forms look.
QVBoxLayout *section(const QString &title, QWidget *parent, QVBoxLayout *form)
{
    auto *heading = new QLabel(title, parent);
    heading->setFont(Theme::font(Theme::TextStyle::headline));
    auto *panel = new RoundedPanel(Theme::label(Theme::Level::quaternary, parent).lighter(100), 10, parent);
    panel->setFill(Theme::withOpacity(parent->palette().color(QPalette::WindowText), 0.05));
    panel->setBorder(Theme::withOpacity(parent->palette().color(QPalette::WindowText), 0.08));
    auto *content = new QVBoxLayout(panel);
    content->setContentsMargins(14, 12, 14, 12);
    content->setSpacing(10);
    form->addWidget(heading);
    form->addWidget(panel);
    form->addSpacing(8);
    return content;
}

} // namespace

SettingsWindow::SettingsWindow(AppModel &model, QWidget *parent)
    : QDialog(parent)
    , m_model(model)
    , m_size(new QSlider(Qt::Horizontal, this))
    , m_sizeLabel(new QLabel(this))
    , m_progress(new QLabel(this))
{
    setObjectName(QStringLiteral("settingsWindow"));
    setWindowTitle(Texts::get(Text::settings));
    setMinimumWidth(460);
    setMaximumWidth(460);
    auto *form = new QVBoxLayout(this);
    form->setContentsMargins(20, 18, 20, 18);
    form->setSpacing(6);

    QVBoxLayout *editor = section(Texts::get(Text::settingsEditor), this, form);
    m_sizeLabel->setObjectName(QStringLiteral("codeSizeLabel"));
    m_size->setObjectName(QStringLiteral("codeSize"));
    m_size->setRange(int(Preferences::minimumEditorFontSize), int(Preferences::maximumEditorFontSize));
    m_size->setSingleStep(1);
    m_size->setPageStep(1);
    editor->addWidget(m_sizeLabel);
    editor->addWidget(m_size);
    Preferences &preferences = Preferences::shared();
    connect(m_size, &QSlider::valueChanged, this, [](int value) { Preferences::shared().setEditorFontSize(value); });
    connect(&preferences, &Preferences::editorFontSizeChanged, this, &SettingsWindow::showSize);
    showSize(preferences.editorFontSize());

    QVBoxLayout *swift = section(Texts::get(Text::settingsSwift), this, form);
    swift->addWidget(new RunnerStatus(model, this));

    QVBoxLayout *progress = section(Texts::get(Text::settingsProgress), this, form);
    m_progress->setObjectName(QStringLiteral("progressLine"));
    progress->addWidget(m_progress);
    auto *again = new QPushButton(Texts::get(Text::startAgain), this);
    again->setObjectName(QStringLiteral("startAgain"));
    // Destructive: drawn in the warning colour.
    Theme::makeTranslucent(again, Theme::vmAlert());
    connect(again, &QPushButton::clicked, this, [this] {
        if (confirmReset())
            m_model.progress()->reset();
    });
    progress->addWidget(again, 0, Qt::AlignLeft);
    form->setSizeConstraint(QLayout::SetFixedSize);

    connect(model.progress(), &ProgressStore::savedChanged, this, &SettingsWindow::showProgress);
    showProgress();
}

bool SettingsWindow::confirmReset()
{
    QMessageBox box(QMessageBox::Warning, Texts::get(Text::startAgainTitle), Texts::get(Text::startAgainTitle),
                    QMessageBox::Cancel, this);
    box.setObjectName(QStringLiteral("confirmReset"));
    box.setInformativeText(Texts::get(Text::startAgainMessage));
    QPushButton *forget = box.addButton(Texts::get(Text::forgetProgress), QMessageBox::DestructiveRole);
    forget->setObjectName(QStringLiteral("forgetProgress"));
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    return box.clickedButton() == forget;
}

void SettingsWindow::showSize(double points)
{
    const QSignalBlocker quiet(m_size);
    m_size->setValue(int(std::lround(points)));
    m_sizeLabel->setText(Texts::get(Text::codeSize).arg(qint64(points)));
}

void SettingsWindow::showProgress()
{
    const QList<Lesson> lessons = m_model.course().lessons();
    m_progress->setText(Texts::get(Text::lessonsDone).arg(m_model.progress()->count(lessons)).arg(lessons.size()));
}

} // namespace Kestrun
