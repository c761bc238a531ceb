#include "tracknames.h"

#include <QHash>
#include <QLocale>

namespace TrackNames {

namespace {

QString codecName(const QString &codec)
{
    static const QHash<QString, QString> names {
        {QStringLiteral("aac"), QStringLiteral("AAC")},
        {QStringLiteral("ac3"), QStringLiteral("AC-3")},
        {QStringLiteral("eac3"), QStringLiteral("E-AC-3")},
        {QStringLiteral("mp2"), QStringLiteral("MP2")},
        {QStringLiteral("mp3"), QStringLiteral("MP3")},
        {QStringLiteral("opus"), QStringLiteral("Opus")},
        {QStringLiteral("vorbis"), QStringLiteral("Vorbis")},
        {QStringLiteral("flac"), QStringLiteral("FLAC")},
        {QStringLiteral("alac"), QStringLiteral("ALAC")},
        {QStringLiteral("dts"), QStringLiteral("DTS")},
        {QStringLiteral("truehd"), QStringLiteral("TrueHD")},
        {QStringLiteral("subrip"), QStringLiteral("SubRip")},
        {QStringLiteral("srt"), QStringLiteral("SubRip")},
        {QStringLiteral("ass"), QStringLiteral("ASS")},
        {QStringLiteral("ssa"), QStringLiteral("SSA")},
        {QStringLiteral("webvtt"), QStringLiteral("WebVTT")},
        {QStringLiteral("mov_text"), QStringLiteral("Timed Text")},
        {QStringLiteral("microdvd"), QStringLiteral("MicroDVD")},
        {QStringLiteral("dvd_subtitle"), QStringLiteral("DVD")},
        {QStringLiteral("hdmv_pgs_subtitle"), QStringLiteral("PGS")},
        {QStringLiteral("dvb_subtitle"), QStringLiteral("DVB")},
        {QStringLiteral("eia_608"), QStringLiteral("CEA-608")},
    };
    if (const auto found = names.constFind(codec); found != names.cend())
        return *found;
    if (codec.startsWith(u"pcm_"))
        return QStringLiteral("PCM");
    return codec;
}

QString channelsName(int count)
{
    switch (count) {
    case 0:
        return {};
    case 1:
        return QStringLiteral("mono");
    case 2:
        return QStringLiteral("stereo");
    case 6:
        return QStringLiteral("5.1");
    case 8:
        return QStringLiteral("7.1");
    default:
        return QStringLiteral("%1 channels").arg(count);
    }
}

} // namespace

QString languageName(const QString &code)
{
    const QString trimmed = code.trimmed();
    if (trimmed.isEmpty() || trimmed == u"und")
        return QStringLiteral("Unknown");
    // Two letters (ISO 639-1) or three (639-2 in its bibliographic or terminology form, 639-3).
    const QLocale::Language language = QLocale::codeToLanguage(trimmed.toLower());
    if (language == QLocale::AnyLanguage || language == QLocale::C)
        return trimmed;
    return QLocale::languageToString(language);
}

QString hint(const MediaTrack &track)
{
    QStringList parts;
    if (!track.codec.isEmpty())
        parts.append(codecName(track.codec));
    if (track.kind == TrackKind::audio && !channelsName(track.channelCount).isEmpty())
        parts.append(channelsName(track.channelCount));
    if (parts.isEmpty())
        return {};
    return u'(' + parts.join(u' ') + u')';
}

QString label(const MediaTrack &track)
{
    QStringList parts {languageName(track.language)};
    if (!track.title.trimmed().isEmpty())
        parts.append(u'"' + track.title.trimmed() + u'"');
    if (const QString technical = hint(track); !technical.isEmpty())
        parts.append(technical);
    return parts.join(u' ');
}

QString shortName(const MediaTrack &track)
{
    if (!track.language.trimmed().isEmpty())
        return languageName(track.language);
    if (!track.title.trimmed().isEmpty())
        return track.title.trimmed();
    return QStringLiteral("Track %1").arg(track.id);
}

} // namespace TrackNames
