#pragma once

#include "styledtext.h"

#include <QString>

namespace Kestrun {

// Turns inline Markdown into styled text: emphasis (* or _), strong emphasis
// (** or __), code spans, inline links [label](target "title"), autolinks
// <scheme:...> and <user@host>, strikethrough (~~), backslash escapes and
// character references (numeric ones and a set of common named ones).
// Block syntax is never interpreted: a leading #, -, > or "1." stays text,
// and line breaks and runs of spaces are kept exactly as written. A blank
// line ends every open construct, as a paragraph break would. Images and
// raw HTML stay literal. Never fails: input without markup comes back as
// plain text with no runs.
StyledText markdown(const QString &text);

} // namespace Kestrun
