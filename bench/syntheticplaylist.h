#pragma once
// A playlist shaped like the big provider lists: tokenised addresses, logos, groups, countries,
// a few relative addresses and option directives. The same count gives the same bytes.
#include <QByteArray>

QByteArray makeSyntheticPlaylist(int count);

// A list shaped like real provider lists in what the catch-up attributes add: CJK and Cyrillic
// inside tvg-id and tvg-name as well as names, relative addresses against the list's base,
// http-user-agent and catch-up attributes on a quarter of the #EXTINF lines, tvg-country on
// half, a header naming its guide with url-tvg.
QByteArray makeProviderShapedPlaylist(int count);
