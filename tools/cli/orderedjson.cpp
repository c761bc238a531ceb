#include "orderedjson.h"

#include <QJsonArray>
#include <QJsonDocument>

QByteArray valueJson(const QJsonValue &value)
{
    // QJsonDocument writes only arrays and objects; a one-element array gives a value's text.
    const QByteArray array = QJsonDocument(QJsonArray {value}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

QByteArray toCompactJson(const OrderedJsonObject &object)
{
    QByteArray json = "{";
    for (qsizetype i = 0; i < object.size(); ++i) {
        if (i > 0)
            json += ',';
        json += valueJson(object[i].first);
        json += ':';
        json += valueJson(object[i].second);
    }
    json += '}';
    return json;
}

QJsonValue jsonOrNull(const std::optional<QString> &text)
{
    return text ? QJsonValue(*text) : QJsonValue(QJsonValue::Null);
}
