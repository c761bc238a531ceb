#pragma once

// Turns the bytes of a downloaded or imported playlist into text.

#include "playlisterror.h"

#include <QByteArray>
#include <QString>

// UTF-8 when the bytes are valid UTF-8 (a leading byte-order mark is dropped), else ISO Latin-1,
// which maps every byte, so invalidEncoding cannot arise for a byte array; it stays part of the
// contract for callers that read text through other means.
QString decodePlaylistText(const QByteArray &bytes);
