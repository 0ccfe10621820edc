#include "styledformat.h"

#include "theme/theme.h"

#include <QFontDatabase>
#include <QTextCursor>

namespace Kestrun::StyledFormat {

QTextCharFormat charFormat(const TextStyle &style)
{
    QTextCharFormat format;
    if (style.strong)
        format.setFontWeight(QFont::Bold);
    else if (style.semibold)
        format.setFontWeight(QFont::DemiBold);
    if (style.emphasis)
        format.setFontItalic(true);
    if (style.strikethrough)
        format.setFontStrikeOut(true);
    if (style.monospace) {
        static const QStringList fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont).families();
        format.setFontFamilies(fixed);
        format.setFontFixedPitch(true);
    }
    if (style.color)
        format.setForeground(QColor(style.color->red, style.color->green, style.color->blue));
    if (style.link) {
        format.setAnchor(true);
        format.setAnchorHref(*style.link);
        format.setForeground(Theme::vmSea());
    }
    return format;
}

void insert(QTextCursor &cursor, const StyledText &text)
{
    const QTextCharFormat plain = cursor.charFormat();
    qsizetype at = 0;
    for (const StyledRun &run : text.runs) {
        if (run.start > at)
            cursor.insertText(text.text.mid(at, run.start - at), plain);
        QTextCharFormat format = plain;
        format.merge(charFormat(run.style));
        cursor.insertText(text.text.mid(run.start, run.length), format);
        at = run.start + run.length;
    }
    if (at < text.text.size())
        cursor.insertText(text.text.mid(at), plain);
}

} // namespace Kestrun::StyledFormat
