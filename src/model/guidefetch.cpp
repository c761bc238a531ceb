#include "guidefetch.h"

#include "downloadrequest.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
// An answer other than 2xx from an http server; 0 for a file or no answer yet.
int errorStatus(const QNetworkReply &reply)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return status != 0 && (status < 200 || status > 299) ? status : 0;
}

// Read a piece at a time, each step a short one, so that a stop is heard between them.
constexpr qint64 chunkBytes = 256 * 1024;
} // namespace

GuideFetch::GuideFetch(QNetworkAccessManager &network, const QUrl &url, bool networkOnly,
                       XmltvReader::Options options, const Limits &limits,
                       std::function<void()> done, QObject *parent)
    : QObject(parent)
    , m_name(displayName(url))
    , m_limits(limits)
    , m_feed(m_name, std::move(options), limits.maxUnpackedBytes)
    , m_done(std::move(done))
{
    // Each start ends in a later call of its own, never in this constructor.
    const bool overNetwork = url.scheme() == u"http" || url.scheme() == u"https";
    if (networkOnly && !overNetwork) {
        QTimer::singleShot(0, this, [this] {
            end(QStringLiteral("A playlist from the network cannot name a file on this computer."));
        });
    } else if (url.isLocalFile()) {
        QTimer::singleShot(0, this, [this, path = url.toLocalFile()] { openFile(path); });
    } else if (overNetwork) {
        download(network, url);
    } else {
        QTimer::singleShot(0, this, [this] {
            end(QStringLiteral("Only http and https addresses can be downloaded."));
        });
    }
}

GuideFetch::~GuideFetch()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
    }
}

QString GuideFetch::displayName(const QUrl &url)
{
    const QString file = url.fileName();
    if (!file.isEmpty())
        return file;
    if (!url.host().isEmpty())
        return url.host();
    return url.toDisplayString();
}

void GuideFetch::openFile(const QString &path)
{
    // Opened without waiting, then checked: a named pipe would block until a writer came.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        end(errno == ENOENT ? QStringLiteral("There is no such file.")
                            : QStringLiteral("The file couldn’t be opened."));
        return;
    }
    struct stat status
    {
    };
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        end(QStringLiteral("It isn’t a regular file."));
        return;
    }
    if (!m_file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        end(QStringLiteral("The file couldn’t be opened."));
        return;
    }
    readFileChunk();
}

void GuideFetch::readFileChunk()
{
    if (m_ended)
        return;
    const QByteArray chunk = m_file.read(chunkBytes);
    if (chunk.isEmpty()) {
        end(m_file.error() == QFileDevice::NoError ? QString()
                                                   : QStringLiteral("The file couldn’t be read."));
        return;
    }
    if (!m_feed.feed(chunk)) {
        end();
        return;
    }
    QTimer::singleShot(0, this, &GuideFetch::readFileChunk);
}

void GuideFetch::download(QNetworkAccessManager &network, const QUrl &url)
{
    m_reply = network.get(downloadRequest(url));
    const auto timedOut = [this] {
        if (m_reply) {
            m_reply->disconnect(this);
            m_reply->abort();
        }
        end(downloadTimedOutDescription());
    };
    m_idleTimer.setSingleShot(true);
    connect(&m_idleTimer, &QTimer::timeout, this, timedOut);
    m_idleTimer.start(m_limits.idleTimeoutMs);
    // A server sending a byte now and then never lets the idle timer run out.
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, timedOut);
    m_deadline.start(m_limits.deadlineMs);
    connect(m_reply, &QNetworkReply::metaDataChanged, this,
            [this] { m_idleTimer.start(m_limits.idleTimeoutMs); });
    connect(m_reply, &QIODevice::readyRead, this, &GuideFetch::readReply);
    connect(m_reply, &QNetworkReply::finished, this, &GuideFetch::replyFinished);
}

void GuideFetch::readReply()
{
    m_idleTimer.start(m_limits.idleTimeoutMs);
    if (errorStatus(*m_reply) != 0) {
        m_reply->readAll(); // an error page, which is no guide
        return;
    }
    while (m_reply && m_reply->bytesAvailable() > 0) {
        if (!m_feed.feed(m_reply->read(chunkBytes))) {
            // Enough: the limit is reached, or what comes is no guide.
            m_reply->disconnect(this);
            m_reply->abort();
            end();
            return;
        }
    }
}

void GuideFetch::replyFinished()
{
    QNetworkReply *reply = m_reply;
    const int status = errorStatus(*reply);
    QString failure;
    if (status != 0) {
        failure = QStringLiteral("The server returned an error (%1).").arg(status);
    } else if (reply->error() != QNetworkReply::NoError) {
        failure = networkErrorDescription(reply->error(), reply->errorString());
    } else {
        readReply();
        if (m_ended)
            return;
    }
    end(failure);
}

void GuideFetch::end(const QString &failure)
{
    if (m_ended)
        return;
    m_ended = true;
    m_idleTimer.stop();
    m_deadline.stop();
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->deleteLater();
        m_reply = nullptr;
    }
    m_file.close();
    m_failure = failure;
    m_feed.finish();
    // done may delete this fetch; nothing here runs after it.
    std::function<void()> done = std::move(m_done);
    done();
}

QStringList GuideFetch::notices() const
{
    if (m_failure.isEmpty())
        return m_feed.notices();
    const XmltvReader &reader = m_feed.reader();
    if (reader.channels().empty() && reader.programmeCount() == 0)
        return {QStringLiteral("The programme guide “%1” couldn’t be loaded. %2")
                    .arg(m_name, m_failure)};
    return {QStringLiteral("The programme guide “%1” stopped loading: what came of it is used. %2")
                .arg(m_name, m_failure)};
}
