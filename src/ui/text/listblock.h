#pragma once

#include "theme/theme.h"

#include <QStringList>
#include <QWidget>

class QGridLayout;

namespace Kestrun {

class ListMarker;
class MarkdownLabel;

// A numbered or bulleted list: a column of markers, right-aligned so that
// the texts start at one edge, and the item texts through Markdown.
class ListBlock : public QWidget {
    Q_OBJECT

public:
    ListBlock(bool ordered, const QStringList &items, Theme::Level level = Theme::Level::primary,
              QWidget *parent = nullptr);

    int count() const;
    ListMarker *marker(int item) const;
    MarkdownLabel *item(int item) const;

private:
    QGridLayout *m_grid;
};

} // namespace Kestrun
