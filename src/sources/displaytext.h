#pragma once
// Texts from files, servers and playlists as they may be shown: without control characters
// (white space among them becomes a space) and without the bidirectional overrides,
// embeddings and isolates that make "gnp.exe" read as "exe.png". Right-to-left names still read
// right: their direction comes from their letters. The raw text stays where it is kept.
#include <QString>

namespace DisplayText {

QString clean(const QString &text);

// For a menu item: clean, cut at maxCharacters with an ellipsis, and every & doubled so that no
// text gives itself a keyboard shortcut.
QString forMenu(const QString &text, qsizetype maxCharacters = 80);

} // namespace DisplayText
