#pragma once

#include "course/styledtext.h"

#include <QTextCharFormat>

class QTextCursor;

// Qt's text formats for the toolkit-free styled text of the course.
namespace Kestrun::StyledFormat {

// The format of one style run: weight, slant, strike-out, the monospaced
// family for code, a colour, and for a link its target in the accent colour.
// Sizes are left to the document's font, so that a change of font reaches
// every run.
QTextCharFormat charFormat(const TextStyle &style);

// Inserts the text at the cursor, each run in its format.
void insert(QTextCursor &cursor, const StyledText &text);

} // namespace Kestrun::StyledFormat
