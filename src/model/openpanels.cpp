#include "openpanels.h"

namespace OpenPanels {

namespace {
QString patterns(const QStringList &extensions)
{
    QStringList globs;
    for (const QString &extension : extensions)
        globs.append(QStringLiteral("*.") + extension);
    return globs.join(u' ');
}
} // namespace

const QStringList &mediaExtensions()
{
    static const QStringList extensions {
        QStringLiteral("mp4"),  QStringLiteral("mov"),  QStringLiteral("mkv"),
        QStringLiteral("avi"),  QStringLiteral("webm"), QStringLiteral("m4v"),
        QStringLiteral("mpeg"), QStringLiteral("mpg"),  QStringLiteral("ts"),
        QStringLiteral("m2ts"), QStringLiteral("3gp"),  QStringLiteral("3g2"),
        QStringLiteral("mp3"),  QStringLiteral("m4a"),  QStringLiteral("aac"),
        QStringLiteral("wav"),  QStringLiteral("aiff"), QStringLiteral("caf"),
    };
    return extensions;
}

OpenPanelRequest chooseMedia()
{
    return {QStringLiteral("Choose Media to Play"),
            QString(),
            {QStringLiteral("Media Files (%1)").arg(patterns(mediaExtensions()))}};
}

OpenPanelRequest importPlaylist()
{
    // The playlist types first, then plain text; the first filter offers them all at once, as a
    // panel that accepts several types does. Lists are often saved without a known extension,
    // so any file can be chosen too.
    const QString m3u = QStringLiteral("*.m3u *.m3u8");
    const QString text = QStringLiteral("*.txt");
    return {QStringLiteral("Import M3U Playlist"),
            QStringLiteral("Import"),
            {QStringLiteral("M3U Playlists and Plain Text (%1 %2)").arg(m3u, text),
             QStringLiteral("M3U Playlist (%1)").arg(m3u),
             QStringLiteral("Plain Text (%1)").arg(text), QStringLiteral("All Files (*)")}};
}

const QStringList &subtitleExtensions()
{
    static const QStringList extensions {QStringLiteral("srt"), QStringLiteral("ass"),
                                         QStringLiteral("ssa"), QStringLiteral("vtt"),
                                         QStringLiteral("sub")};
    return extensions;
}

OpenPanelRequest loadSubtitles()
{
    return {QStringLiteral("Load Subtitle File"),
            QStringLiteral("Load"),
            {QStringLiteral("Subtitles (%1)").arg(patterns(subtitleExtensions())),
             QStringLiteral("All Files (*)")}};
}

OpenPanelRequest openGuide()
{
    // Guides are XMLTV, often packed; the bytes tell which, so any file can be chosen too.
    return {QStringLiteral("Open Programme Guide"),
            QStringLiteral("Open"),
            {QStringLiteral("XMLTV Guides (*.xml *.xml.gz *.xml.xz *.gz *.xz)"),
             QStringLiteral("All Files (*)")}};
}

} // namespace OpenPanels
