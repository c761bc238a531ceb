#include "classifycommand.h"

#include "sources/sourceaddress.h"

namespace {

QString kindName(SourceAddress::SourceKind kind)
{
    switch (kind) {
    case SourceAddress::SourceKind::youtube:
        return QStringLiteral("youtube");
    case SourceAddress::SourceKind::playlist:
        return QStringLiteral("playlist");
    case SourceAddress::SourceKind::stream:
        return QStringLiteral("stream");
    case SourceAddress::SourceKind::invalid:
        break;
    }
    return QStringLiteral("invalid");
}

} // namespace

QByteArray classificationJson(const QString &input)
{
    using SourceAddress::SourceKind;
    const SourceAddress::Classification result = SourceAddress::classify(input);
    const std::optional<YouTubeContent> &content = result.youtubeContent;
    const QJsonValue null(QJsonValue::Null);
    return toCompactJson({
        {QStringLiteral("input"), input},
        {QStringLiteral("normalized"), SourceAddress::normalizedRemoteAddress(input)},
        {QStringLiteral("kind"), kindName(result.kind)},
        {QStringLiteral("videoID"), content ? jsonOrNull(content->videoID()) : null},
        {QStringLiteral("playlistID"), content ? jsonOrNull(content->playlistID()) : null},
        {QStringLiteral("id"), content ? QJsonValue(content->id()) : null},
        {QStringLiteral("isLiveStream"),
         result.kind == SourceKind::stream ? QJsonValue(result.isLiveStream) : null},
        {QStringLiteral("error"),
         result.kind == SourceKind::invalid
             ? QJsonValue(SourceAddress::invalidAddressMessage.toString())
             : null},
    });
}
