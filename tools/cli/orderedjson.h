#pragma once

// JSON objects written with their keys in the order given, so that output reads as documented.

#include <QByteArray>
#include <QJsonValue>
#include <QList>
#include <QPair>
#include <QString>

using OrderedJsonObject = QList<QPair<QString, QJsonValue>>;

QByteArray toCompactJson(const OrderedJsonObject &object);

// One value's JSON text: a quoted, escaped string, a number, null.
QByteArray valueJson(const QJsonValue &value);

// A present text as a JSON string, an absent one as null.
QJsonValue jsonOrNull(const std::optional<QString> &text);
