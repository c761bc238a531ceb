#pragma once
// Archives of past programmes as IPTV providers serve them, for the tests, the benchmarks and
// the demo: Flussonic (…/ID/timeshift_abs-UTC.ts), Xtream Codes
// (/timeshift/USER/PASS/MINUTES/Y-m-d:H-M/ID.ts), shift (…?utc=UTC&lutc=NOW) and append
// (…?archive=UTC&end=UTC). Each answer is an MPEG-TS clip whose picture shows the moment it
// holds, as text and as a code along its top that momentShown() reads back.
#include "localhttpserver.h"

#include <QImage>
#include <QList>
#include <QMutex>
#include <QString>
#include <optional>

class CatchupArchive
{
public:
    // A source that only says where to begin gets a clip this long; one that names its end,
    // the programme up to the longest clip made.
    static constexpr int openClipSeconds = 40;
    static constexpr int longestClipSeconds = 180;

    // Clips are made with ffmpeg into folder and kept there for repeated requests.
    explicit CatchupArchive(QString folder);

    // Answers server's archive requests (those of no route of its own).
    void serveOn(LocalHttpServer &server);
    // The answer to an archive request; status 0 for a path that is no archive's.
    HttpResponse answer(const HttpRequest &request);
    // The moments asked for, in the order asked.
    QList<qint64> askedMoments() const;

    // The moment (seconds since the epoch) a frame of a clip shows; nothing when the frame
    // carries no code.
    static std::optional<qint64> momentShown(const QImage &frame);
    // Makes the clip of seconds from moment on at path.
    static bool makeClip(const QString &path, qint64 moment, int seconds);

private:
    HttpResponse clipFrom(const HttpRequest &request, qint64 moment, qint64 seconds);

    QString m_folder;
    mutable QMutex m_mutex;
    QList<qint64> m_asked;
};
