#pragma once
// What the address field does with typed and pasted text before anything is opened.
#include <QString>
#include <optional>

namespace StreamAddress {

// Joins an address a paste broke over lines (carriage returns and line feeds removed), then
// trims spaces and tabs at both ends.
QString cleaned(const QString &text);

// The normalised address to open by itself after typing stops, or none when it is not an http
// or https address (such text is opened only on request).
std::optional<QString> automaticOpenAddress(const QString &text);

} // namespace StreamAddress
