#include "commandinput.h"

#include "sources/urlparts.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cstdio>

void writeErr(const QString &text)
{
    std::fputs(qPrintable(text + u'\n'), stderr);
}

std::optional<qint64> momentWithZone(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral(
        R"(^\d{4}-\d{2}-\d{2}T\d{2}:\d{2}(:\d{2}(\.\d{1,3})?)?(Z|[+-]\d{2}:\d{2})$)"));
    if (!pattern.match(text).hasMatch())
        return std::nullopt;
    const QDateTime moment = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!moment.isValid())
        return std::nullopt;
    return moment.toSecsSinceEpoch();
}

std::optional<PlaylistInput> readPlaylistInput(const QString &path,
                                               const std::optional<QString> &base, int &status)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        writeErr(QStringLiteral("lumo-cli: cannot read %1: %2").arg(path, file.errorString()));
        status = 1;
        return std::nullopt;
    }
    PlaylistInput input;
    input.bytes = file.readAll();
    // As if the playlist came from base: its relative addresses resolve there, and a playlist
    // from the network may name no file of this computer.
    input.baseURL = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (base) {
        const std::optional<QUrl> parsed = UrlParts::parse(*base);
        if (!parsed || parsed->isRelative()) {
            writeErr(QStringLiteral("lumo-cli: --base must be an absolute address: %1").arg(*base));
            status = 2;
            return std::nullopt;
        }
        input.baseURL = *parsed;
    }
    return input;
}
