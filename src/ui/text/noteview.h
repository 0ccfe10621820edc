#pragma once

#include "course/block.h"
#include "theme/theme.h"

#include <QIcon>
#include <QWidget>

namespace Kestrun {

class BlocksView;
class SelectableText;

// A highlighted box: an icon, the note's kind as its title, and its blocks,
// on a tint of the kind's colour.
class NoteView : public QWidget {
    Q_OBJECT

public:
    // The icon and colour of a kind, chosen by exact, case-sensitive name.
    struct Look {
        QString symbol;
        QColor color;
    };
    static Look look(const QString &kind);

    NoteView(const QString &kind, const QList<Block> &blocks, Theme::Level level = Theme::Level::primary,
             QWidget *parent = nullptr);

    QString kind() const { return m_kind; }
    Look look() const { return look(m_kind); }
    SelectableText *title() const { return m_title; }
    // Where the icon is drawn.
    QRect iconRect() const;
    BlocksView *content() const { return m_content; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    static int iconSize();

    QString m_kind;
    QIcon m_symbol;
    QWidget *m_iconArea;
    SelectableText *m_title;
    BlocksView *m_content;
};

} // namespace Kestrun
