#include "parsecommand.h"

#include "sources/playlisterror.h"
#include "sources/playlistparser.h"
#include "sources/urlparts.h"

#include "orderedjson.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

#include <sys/mman.h>
#include <unistd.h>

namespace {

void writeErr(const QString &text)
{
    std::fputs(qPrintable(text + u'\n'), stderr);
}

QByteArray entryJson(const PlaylistEntry &entry)
{
    const QByteArrayView logo = entry.encodedLogoURL();
    return toCompactJson({
        {QStringLiteral("name"), entry.name()},
        {QStringLiteral("url"), QString::fromLatin1(entry.encodedUrl())},
        {QStringLiteral("logoURL"),
         logo.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(QString::fromLatin1(logo))},
        {QStringLiteral("groupTitle"), jsonOrNull(entry.groupTitle())},
        {QStringLiteral("countryCode"), jsonOrNull(entry.countryCode())},
    });
}

// Lets go of the pages of a mapped file whose lines are read, so that the file does not stay
// resident beside the channels made from it. Pages the stretch only partly covers are kept;
// pages read again later come back from the file.
void releaseMappedPages(QByteArrayView read)
{
    static const auto pageSize = quintptr(sysconf(_SC_PAGESIZE));
    const auto begin = quintptr(read.data());
    const quintptr first = (begin + pageSize - 1) & ~(pageSize - 1);
    const quintptr last = (begin + quintptr(read.size())) & ~(pageSize - 1);
    if (last > first)
        madvise(reinterpret_cast<void *>(first), last - first, MADV_DONTNEED);
}

} // namespace

int runParseCommand(const QStringList &arguments)
{
    QString path;
    QString base;
    bool countOnly = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (argument == u"--count") {
            countOnly = true;
        } else if (argument == u"--base") {
            if (++i >= arguments.size()) {
                writeErr(QStringLiteral("lumo-cli: --base needs an address"));
                return 2;
            }
            base = arguments[i];
        } else if (path.isEmpty()) {
            path = argument;
        } else {
            writeErr(QStringLiteral("lumo-cli: unexpected argument: %1").arg(argument));
            return 2;
        }
    }
    if (path.isEmpty()) {
        writeErr(QStringLiteral("usage: lumo-cli parse-m3u FILE [--base ADDRESS] [--count]"));
        return 2;
    }

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        writeErr(QStringLiteral("lumo-cli: cannot read %1: %2").arg(path, file.errorString()));
        return 1;
    }
    // Mapped, not copied: a 60 MB list is read straight from the page cache.
    const qint64 size = file.size();
    const uchar *mapped = size > 0 ? file.map(0, size) : nullptr;
    const QByteArray readBytes = mapped ? QByteArray() : file.readAll();
    const QByteArrayView bytes = mapped
        ? QByteArrayView(reinterpret_cast<const char *>(mapped), size)
        : QByteArrayView(readBytes);

    QUrl baseURL = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (!base.isEmpty()) {
        const std::optional<QUrl> parsed = UrlParts::parse(base);
        if (!parsed || parsed->isRelative()) {
            writeErr(QStringLiteral("lumo-cli: --base must be an absolute address: %1").arg(base));
            return 2;
        }
        baseURL = *parsed;
    }

    // Left to the process's end to free: freeing 200,000 channels one by one only costs time.
    static const auto *const kept = new QList<PlaylistEntry>(PlaylistParser::parse(
        bytes, baseURL, mapped ? PlaylistParser::BytesRead(releaseMappedPages) : nullptr));
    const QList<PlaylistEntry> &entries = *kept;
    if (entries.isEmpty()) {
        writeErr(playlistErrorDescription(PlaylistError::empty));
        return 1;
    }
    if (countOnly) {
        std::printf("%lld\n", static_cast<long long>(entries.size()));
        return 0;
    }
    // One compact object per line keeps huge playlists readable with grep and head.
    std::fputs("[\n", stdout);
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const QByteArray json = entryJson(entries[i]);
        std::fwrite(json.constData(), 1, size_t(json.size()), stdout);
        std::fputs(i + 1 < entries.size() ? ",\n" : "\n", stdout);
    }
    std::fputs("]\n", stdout);
    return 0;
}
