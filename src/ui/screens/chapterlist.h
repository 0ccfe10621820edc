#pragma once

#include <QList>
#include <QString>
#include <QTextLayout>
#include <QWidget>

#include <memory>

namespace Kestrun {

// The home screen's chapters: a number, the title and summary, and how many
// lessons are done. Drawn in one widget, so that the first screen a learner
// sees does not wait for a dozen nested layouts to agree on their heights.
class ChapterList : public QWidget {
    Q_OBJECT

public:
    struct Row {
        QString number;   // "01"
        QString title;
        QString summary;
        QString count;    // "3/20"
    };

    explicit ChapterList(QWidget *parent = nullptr);

    void setRows(const QList<Row> &rows);
    // Only the counts change as the learner goes on.
    void setCounts(const QStringList &counts);
    const QList<Row> &rows() const { return m_rows; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Laid {
        std::unique_ptr<QTextLayout> title;
        std::unique_ptr<QTextLayout> summary;
        int height = 0;
    };

    int textLeft() const;
    int textWidth(int width) const;
    // Lays every row out for a width, unless it already is.
    void layOut(int width) const;

    QList<Row> m_rows;
    mutable int m_laidWidth = -1;
    mutable std::vector<Laid> m_laid;
    mutable QList<std::pair<int, int>> m_heights;  // width -> height, the last few asked
};

} // namespace Kestrun
