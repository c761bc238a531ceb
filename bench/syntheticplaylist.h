#pragma once
// A playlist shaped like the big provider lists: tokenised addresses, logos, groups, countries,
// a few relative addresses and option directives. The same count gives the same bytes.
#include <QByteArray>

QByteArray makeSyntheticPlaylist(int count);
