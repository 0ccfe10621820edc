#include "runnerstatus.h"

#include "app/appmodel.h"
#include "runner/toolchain.h"
#include "texts/texts.h"
#include "theme/iconlabel.h"
#include "theme/roundedpanel.h"
#include "theme/theme.h"

#include <QDesktopServices>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace Kestrun {

namespace {

// What helps the learner install Swift on this platform.
void openInstaller()
{
#if defined(Q_OS_MACOS)
    if (Toolchain::inSandbox())
        QDesktopServices::openUrl(QUrl(QStringLiteral("macappstore://apps.apple.com/app/id497799835")));
    else
        QProcess::startDetached(QStringLiteral("/usr/bin/xcode-select"), {QStringLiteral("--install")});
#else
    QDesktopServices::openUrl(QUrl(QStringLiteral("https://www.swift.org/install/linux/")));
#endif
}

} // namespace

RunnerStatus::RunnerStatus(AppModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_line(new IconLabel(QStringLiteral("hourglass"), {}, Theme::label(Theme::Level::secondary), this))
    , m_guidance(new RoundedPanel(Theme::withOpacity(Theme::vmAlert(), 0.08), 14, this))
    , m_reason(new IconLabel(QStringLiteral("exclamationmark.triangle"), {}, Theme::vmAlert(), m_guidance))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_line);
    layout->addWidget(m_guidance);
    m_line->setObjectName(QStringLiteral("runnerStatusLine"));
    m_guidance->setObjectName(QStringLiteral("toolchainGuidance"));

    auto *box = new QVBoxLayout(m_guidance);
    box->setContentsMargins(16, 16, 16, 16);
    box->setSpacing(10);
    box->addWidget(m_reason);
    const bool sandboxed = Toolchain::inSandbox();
#if defined(Q_OS_MACOS)
    const bool appStore = sandboxed;
#else
    const bool appStore = false;
    Q_UNUSED(sandboxed)
#endif
    auto *install = new QPushButton(Texts::get(appStore ? Text::getXcode : Text::installTools), m_guidance);
    install->setObjectName(QStringLiteral("installButton"));
    Theme::makeTranslucent(install);
    connect(install, &QPushButton::clicked, this, &openInstaller);
    auto *note = new QLabel(Texts::get(appStore ? Text::getXcodeNote : Text::installToolsNote), m_guidance);
    note->setWordWrap(true);
    note->setFont(Theme::font(Theme::TextStyle::callout));
    Theme::setTextColor(note, Theme::label(Theme::Level::secondary, note));
    box->addWidget(install, 0, Qt::AlignLeft);
    box->addWidget(note);

    connect(&m_model, &AppModel::runnerStateChanged, this, &RunnerStatus::showState);
    showState();
}

void RunnerStatus::showState()
{
    const RunnerState state = m_model.runnerState();
    const QColor secondary = Theme::label(Theme::Level::secondary, this);
    switch (state.kind) {
    case RunnerState::Kind::looking:
        m_line->setSymbol(QStringLiteral("hourglass"), secondary);
        m_line->setText(Texts::get(Text::lookingForCompiler));
        break;
    case RunnerState::Kind::ready:
        m_line->setSymbol(QStringLiteral("checkmark.circle"), secondary);
        m_line->setText(state.text);
        break;
    case RunnerState::Kind::unavailable:
        m_reason->setText(state.text);
        break;
    }
    m_line->setVisible(state.kind != RunnerState::Kind::unavailable);
    m_guidance->setVisible(state.kind == RunnerState::Kind::unavailable);
}

} // namespace Kestrun
