#include "localhttpserver.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

namespace {

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 206:
        return "Partial Content";
    case 301:
        return "Moved Permanently";
    case 302:
        return "Found";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 416:
        return "Range Not Satisfiable";
    case 500:
        return "Internal Server Error";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

QByteArray mimeType(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("m3u8"))
        return "application/vnd.apple.mpegurl";
    if (suffix == QLatin1String("m3u"))
        return "audio/x-mpegurl";
    if (suffix == QLatin1String("ts"))
        return "video/mp2t";
    if (suffix == QLatin1String("mp4"))
        return "video/mp4";
    if (suffix == QLatin1String("png"))
        return "image/png";
    return "application/octet-stream";
}

} // namespace

HttpResponse HttpResponse::text(QByteArray body, QByteArray contentType, int status)
{
    HttpResponse response;
    response.status = status;
    response.body = std::move(body);
    response.contentType = std::move(contentType);
    return response;
}

HttpResponse HttpResponse::redirect(const QByteArray &location, int status)
{
    HttpResponse response = text(QByteArray(), "text/plain", status);
    response.headers.append(std::pair<QByteArray, QByteArray>("Location", location));
    return response;
}

HttpResponse HttpResponse::notFound()
{
    return text("not found\n", "text/plain", 404);
}

// One client connection: reads one request, then writes one response and closes.
class LocalHttpServer::Connection final : public QObject
{
public:
    Connection(QTcpSocket *socket, LocalHttpServer *server)
        : QObject(server)
        , m_socket(socket)
        , m_server(server)
    {
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, &Connection::read);
        connect(socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
        connect(socket, &QTcpSocket::bytesWritten, this, &Connection::writeMore);
    }

    void respond(const HttpResponse &response)
    {
        if (response.neverAnswer)
            return;
        if (response.delayMs > 0) {
            HttpResponse now = response;
            now.delayMs = 0;
            QTimer::singleShot(response.delayMs, this, [this, now] { respond(now); });
            return;
        }
        QByteArray head = "HTTP/1.1 " + QByteArray::number(response.status) + ' '
            + reasonPhrase(response.status) + "\r\nContent-Type: " + response.contentType
            + "\r\nConnection: close\r\n";
        for (const auto &[name, value] : response.headers)
            head += name + ": " + value + "\r\n";
        if (response.generatedBytes < 0 && response.dripIntervalMs == 0
            && response.bytesPerSecond == 0)
            head += "Content-Length: " + QByteArray::number(response.body.size()) + "\r\n";
        head += "\r\n";
        m_socket->write(head);
        if (m_headOnly)
            return finishWhenFlushed();

        if (response.closeAfterMs > 0)
            QTimer::singleShot(response.closeAfterMs, m_socket, &QTcpSocket::abort);
        if (response.bytesPerSecond > 0) {
            // A tenth of a second's worth at a time. The body stays shared with the route's: a
            // connection copies only what it writes, so a test that measures the process's
            // memory does not count a copy of the body per connection.
            m_pending = response.body;
            m_pendingOffset = 0;
            const qint64 step = std::max<qint64>(1, response.bytesPerSecond / 10);
            auto *pace = new QTimer(this);
            connect(pace, &QTimer::timeout, this, [this, pace, step] {
                if (m_socket->state() != QAbstractSocket::ConnectedState) {
                    pace->stop();
                    return;
                }
                if (m_pendingOffset >= m_pending.size()) {
                    pace->stop();
                    return finishWhenFlushed();
                }
                m_socket->write(m_pending.mid(m_pendingOffset, step));
                m_pendingOffset += step;
            });
            pace->start(100);
        } else if (response.dripIntervalMs > 0) {
            m_pending = response.body;
            auto *drip = new QTimer(this);
            connect(drip, &QTimer::timeout, this, [this, drip] {
                if (m_pending.isEmpty()) {
                    drip->stop();
                    return finishWhenFlushed();
                }
                m_socket->write(m_pending.left(1));
                m_pending.remove(0, 1);
            });
            drip->start(response.dripIntervalMs);
        } else if (response.generatedBytes >= 0) {
            m_pattern = response.body.isEmpty() ? QByteArray("x") : response.body;
            m_generateLeft = response.generatedBytes;
            writeMore();
        } else {
            m_socket->write(response.body);
            finishWhenFlushed();
        }
    }

private:
    void read()
    {
        m_buffer += m_socket->readAll();
        if (m_dispatched)
            return;
        const qsizetype end = m_buffer.indexOf("\r\n\r\n");
        if (end < 0) {
            if (m_buffer.size() > 64 * 1024)
                m_socket->abort();
            return;
        }
        const QList<QByteArray> lines = m_buffer.left(end).split('\n');
        const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
        HttpRequest request;
        request.method = requestLine.value(0);
        const QUrl target = QUrl::fromEncoded(requestLine.value(1));
        request.path = target.path();
        request.query = target.query(QUrl::FullyEncoded);
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const qsizetype colon = lines[i].indexOf(':');
            if (colon > 0)
                request.headers.insert(lines[i].left(colon).trimmed().toLower(),
                                       lines[i].mid(colon + 1).trimmed());
        }
        m_headOnly = request.method == "HEAD";
        m_dispatched = true;
        m_server->dispatch(this, request);
    }

    void writeMore()
    {
        // Generated bodies are written as the socket drains, so memory stays flat.
        if (m_generateLeft <= 0 || m_socket->bytesToWrite() > 256 * 1024)
            return;
        QByteArray chunk;
        while (chunk.size() < 64 * 1024 && chunk.size() < m_generateLeft)
            chunk += m_pattern;
        chunk.truncate(qMin<qint64>(chunk.size(), m_generateLeft));
        m_generateLeft -= chunk.size();
        m_socket->write(chunk);
        if (m_generateLeft <= 0)
            finishWhenFlushed();
    }

    void finishWhenFlushed() { m_socket->disconnectFromHost(); }

    QTcpSocket *m_socket;
    LocalHttpServer *m_server;
    QByteArray m_buffer;
    bool m_dispatched = false;
    bool m_headOnly = false;
    QByteArray m_pending;
    qsizetype m_pendingOffset = 0; // what of m_pending was written, while it is paced
    QByteArray m_pattern;
    qint64 m_generateLeft = 0;
};

LocalHttpServer::LocalHttpServer(QObject *parent)
    : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &LocalHttpServer::accept);
}

LocalHttpServer::~LocalHttpServer() = default;

bool LocalHttpServer::listen(quint16 port)
{
    return m_server.listen(QHostAddress::LocalHost, port);
}

quint16 LocalHttpServer::port() const
{
    return m_server.serverPort();
}

QUrl LocalHttpServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port()).arg(path));
}

void LocalHttpServer::route(const QString &path, HttpResponse response)
{
    m_routes.insert(path, [response](const HttpRequest &) { return response; });
}

void LocalHttpServer::route(const QString &path, Handler handler)
{
    m_routes.insert(path, std::move(handler));
}

void LocalHttpServer::serveDirectory(const QString &root)
{
    m_root = root;
}

void LocalHttpServer::hold(const QRegularExpression &paths)
{
    m_hold = paths;
    if (m_hold.isValid() && !m_hold.pattern().isEmpty())
        return;
    const auto held = std::exchange(m_held, {});
    for (const auto &[connection, request] : held)
        dispatch(connection, request);
}

void LocalHttpServer::accept()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection())
        new Connection(socket, this);
}

void LocalHttpServer::dispatch(Connection *connection, const HttpRequest &request)
{
    if (m_hold.isValid() && !m_hold.pattern().isEmpty() && m_hold.match(request.path).hasMatch()) {
        // The connection may close while held; it is then forgotten.
        m_held.append({connection, request});
        connect(connection, &QObject::destroyed, this, [this, connection] {
            m_held.removeIf([connection](const auto &held) { return held.first == connection; });
        });
        return;
    }
    ++m_requestCounts[request.path];
    ++m_openConnections[request.path];
    connect(connection, &QObject::destroyed, this,
            [this, path = request.path] { --m_openConnections[path]; });
    const auto route = m_routes.constFind(request.path);
    if (route != m_routes.constEnd()) {
        connection->respond((*route)(request));
        return;
    }
    if (m_fallback) {
        HttpResponse response = m_fallback(request);
        if (response.status != 0) {
            connection->respond(std::move(response));
            return;
        }
    }
    connection->respond(fileResponse(request));
}

HttpResponse LocalHttpServer::fileResponse(const HttpRequest &request) const
{
    if (m_root.isEmpty() || request.path.contains(QLatin1String("..")))
        return HttpResponse::notFound();
    return HttpResponse::file(request, QDir(m_root).filePath(request.path.mid(1)));
}

HttpResponse HttpResponse::file(const HttpRequest &request, const QString &path)
{
    QFile file(path);
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return HttpResponse::notFound();
    const qint64 size = file.size();
    HttpResponse response;
    response.contentType = mimeType(file.fileName());
    response.headers.append(std::pair<QByteArray, QByteArray>("Accept-Ranges", "bytes"));
    const QByteArray range = request.headers.value("range");
    if (range.startsWith("bytes=")) {
        const QList<QByteArray> bounds = range.mid(6).split('-');
        const qint64 first = bounds.value(0).toLongLong();
        const qint64 last
            = bounds.value(1).isEmpty() ? size - 1 : qMin(bounds.value(1).toLongLong(), size - 1);
        if (first >= size || last < first) {
            response.status = 416;
            response.headers.append(std::pair<QByteArray, QByteArray>(
                "Content-Range", "bytes */" + QByteArray::number(size)));
            return response;
        }
        file.seek(first);
        response.status = 206;
        response.body = file.read(last - first + 1);
        response.headers.append(std::pair<QByteArray, QByteArray>(
            "Content-Range",
            "bytes " + QByteArray::number(first) + '-' + QByteArray::number(last) + '/'
                + QByteArray::number(size)));
        return response;
    }
    response.body = file.readAll();
    return response;
}
