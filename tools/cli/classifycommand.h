#pragma once

// `lumo-cli classify TEXT`: how the player would open what the user typed, as one JSON object.

#include "orderedjson.h"

#include <QString>

QByteArray classificationJson(const QString &input);
