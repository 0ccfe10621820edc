#pragma once

#include "theme/theme.h"

#include <QList>
#include <QStringList>
#include <QWidget>

class QGridLayout;

namespace Kestrun {

class Divider;
class MarkdownLabel;

// A table: the head in semibold, a line, then the rows, each cell through
// Markdown and wrapping; a row shorter than the head leaves the rest empty.
// It is as wide as its content, up to the width it is given.
class TableView : public QWidget {
    Q_OBJECT

public:
    TableView(const QStringList &head, const QList<QStringList> &rows, Theme::Level level = Theme::Level::primary,
              QWidget *parent = nullptr);

    int columnCount() const { return m_columns; }
    MarkdownLabel *headCell(int column) const;
    // A cell of a row; null where the row has no such cell.
    MarkdownLabel *cell(int row, int column) const;
    Divider *divider() const { return m_divider; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    MarkdownLabel *labelAt(int gridRow, int column) const;

    QGridLayout *m_grid;
    Divider *m_divider;
    int m_columns = 0;
};

} // namespace Kestrun
