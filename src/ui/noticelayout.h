#pragma once
// How a notice's text breaks into lines within a width: the whole text when it fits, else
// broken at spaces (anywhere inside a word wider than a line), at most a given number of lines,
// the last ending in an ellipsis when the text goes on. Takes time linear in what can show,
// however long the text: a server's 64 KB name costs no more than a short one.
#include <QFont>
#include <QStringList>

namespace NoticeLayout {

inline constexpr QChar ellipsis(0x2026);

QStringList lines(const QString &text, const QFont &font, int width, int maxLines);

} // namespace NoticeLayout
