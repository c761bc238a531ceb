#include "launchmessage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

QByteArray LaunchMessage::encode(const LaunchMessage &message)
{
    const QJsonObject object {
        {QStringLiteral("arguments"), QJsonArray::fromStringList(message.arguments)},
        {QStringLiteral("workingDirectory"), message.workingDirectory},
    };
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<LaunchMessage> LaunchMessage::decode(const QByteArray &line)
{
    if (line.size() > maximumBytes)
        return std::nullopt;
    QJsonParseError error {};
    const QJsonDocument document = QJsonDocument::fromJson(line.trimmed(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    const QJsonValue arguments = object.value(QStringLiteral("arguments"));
    const QJsonValue folder = object.value(QStringLiteral("workingDirectory"));
    if (!arguments.isArray() || !folder.isString())
        return std::nullopt;
    LaunchMessage message;
    message.workingDirectory = folder.toString();
    for (const QJsonValue &argument : arguments.toArray()) {
        if (!argument.isString())
            return std::nullopt;
        message.arguments.append(argument.toString());
    }
    return message;
}
