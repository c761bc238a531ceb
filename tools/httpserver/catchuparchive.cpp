#include "catchuparchive.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QUrlQuery>

namespace {

// The code: 32 cells along the top fifth of the picture, the moment's bits from the highest,
// white for 1; a dark line starts each cell so that the cells can be counted by eye.
constexpr int codeBits = 32;
constexpr int width = 256;
constexpr int height = 144;
constexpr int codeHeight = 28;

std::optional<qint64> queryNumber(const QUrlQuery &query, const QString &name)
{
    bool ok = false;
    const qint64 value = query.queryItemValue(name).toLongLong(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

} // namespace

CatchupArchive::CatchupArchive(QString folder)
    : m_folder(std::move(folder))
{
    QDir().mkpath(m_folder);
}

void CatchupArchive::serveOn(LocalHttpServer &server)
{
    server.fallback([this](const HttpRequest &request) { return answer(request); });
}

QList<qint64> CatchupArchive::askedMoments() const
{
    QMutexLocker lock(&m_mutex);
    return m_asked;
}

HttpResponse CatchupArchive::answer(const HttpRequest &request)
{
    static const QRegularExpression flussonic(QStringLiteral(R"(^/.+/timeshift_abs-(\d+)\.ts$)"));
    static const QRegularExpression xc(QStringLiteral(
        R"(^/timeshift/[^/]+/[^/]+/(\d+)/(\d{4})-(\d{2})-(\d{2}):(\d{2})-(\d{2})/[^/]+\.(ts|m3u8)$)"));
    if (const QRegularExpressionMatch match = flussonic.match(request.path); match.hasMatch())
        return clipFrom(request, match.captured(1).toLongLong(), openClipSeconds);
    if (const QRegularExpressionMatch match = xc.match(request.path); match.hasMatch()) {
        // The provider's local time, which is the player's here.
        const QDateTime start(
            QDate(match.captured(2).toInt(), match.captured(3).toInt(), match.captured(4).toInt()),
            QTime(match.captured(5).toInt(), match.captured(6).toInt()));
        if (!start.isValid())
            return HttpResponse::notFound();
        return clipFrom(request, start.toSecsSinceEpoch(), match.captured(1).toLongLong() * 60);
    }
    const QUrlQuery query(request.query);
    if (const std::optional<qint64> utc = queryNumber(query, QStringLiteral("utc")))
        return clipFrom(request, *utc, openClipSeconds);
    if (const std::optional<qint64> from = queryNumber(query, QStringLiteral("archive"))) {
        const qint64 end
            = queryNumber(query, QStringLiteral("end")).value_or(*from + openClipSeconds);
        return clipFrom(request, *from, end - *from);
    }
    HttpResponse passOn;
    passOn.status = 0;
    return passOn;
}

HttpResponse CatchupArchive::clipFrom(const HttpRequest &request, qint64 moment, qint64 seconds)
{
    const int length = int(std::clamp<qint64>(seconds, 1, longestClipSeconds));
    {
        QMutexLocker lock(&m_mutex);
        m_asked.append(moment);
    }
    const QString path
        = QDir(m_folder).filePath(QStringLiteral("%1-%2.ts").arg(moment).arg(length));
    if (!QFile::exists(path) && !makeClip(path, moment, length))
        return HttpResponse::text("cannot make the clip", "text/plain", 500);
    // In byte ranges, so that a player can seek in it.
    HttpResponse response = HttpResponse::file(request, path);
    response.contentType = "video/mp2t";
    return response;
}

bool CatchupArchive::makeClip(const QString &path, qint64 moment, int seconds)
{
    // Each cell's brightness from the moment plus the whole seconds played.
    const QString code
        = QStringLiteral("if(lt(Y,%1),if(lt(mod(X,%2),1),40,255*mod(floor((%3+floor(T))/"
                         "pow(2,%4-floor(X/%2))),2)),128)")
              .arg(codeHeight)
              .arg(width / codeBits)
              .arg(moment)
              .arg(codeBits - 1);
    QString filters = QStringLiteral("geq=lum='%1':cb=128:cr=128").arg(code);
    const QString font = QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf");
    if (QFile::exists(font)) {
        filters += QStringLiteral(",drawtext=fontfile=%1:fontsize=20:fontcolor=white:x=10:y=60:"
                                  "text='%{pts\\:gmtime\\:%2\\:%Y-%m-%d %H\\\\\\:%M\\\\\\:%S}'")
                       .arg(font)
                       .arg(moment);
    }
    const QString partial = path + QStringLiteral(".part");
    QProcess ffmpeg;
    ffmpeg.start(
        QStringLiteral("ffmpeg"),
        {QStringLiteral("-v"),
         QStringLiteral("error"),
         QStringLiteral("-y"),
         QStringLiteral("-f"),
         QStringLiteral("lavfi"),
         QStringLiteral("-i"),
         QStringLiteral("color=c=gray:s=%1x%2:r=5:d=%3").arg(width).arg(height).arg(seconds),
         QStringLiteral("-vf"),
         filters,
         QStringLiteral("-c:v"),
         QStringLiteral("libx264"),
         QStringLiteral("-preset"),
         QStringLiteral("ultrafast"),
         QStringLiteral("-qp"),
         QStringLiteral("10"),
         QStringLiteral("-g"),
         QStringLiteral("5"),
         QStringLiteral("-f"),
         QStringLiteral("mpegts"),
         partial});
    if (!ffmpeg.waitForFinished(60000) || ffmpeg.exitStatus() != QProcess::NormalExit
        || ffmpeg.exitCode() != 0) {
        qWarning("ffmpeg could not make an archive clip: %s",
                 ffmpeg.readAllStandardError().constData());
        return false;
    }
    QFile::remove(path);
    return QFile::rename(partial, path);
}

std::optional<qint64> CatchupArchive::momentShown(const QImage &frame)
{
    if (frame.isNull())
        return std::nullopt;
    const QImage picture = frame.convertToFormat(QImage::Format_Grayscale8);
    const int y = picture.height() * codeHeight / height / 2;
    quint64 moment = 0;
    for (int bit = 0; bit < codeBits; ++bit) {
        // The middle of the cell, clear of its dark starting line.
        const int x = int((bit + 0.6) * picture.width() / codeBits);
        const int level = qGray(picture.pixel(x, y));
        if (level > 100 && level < 160)
            return std::nullopt; // grey: no code here
        moment = (moment << 1) | (level >= 160 ? 1u : 0u);
    }
    return qint64(moment);
}
