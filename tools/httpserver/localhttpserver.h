#pragma once
// A small HTTP/1.1 server on the loopback interface, for tests and the demo: fixed answers,
// files from a folder (with byte ranges), and the misbehaviours of real servers (silence,
// dripping, endless bodies, redirects, stalls). One request per connection. It may be moved
// to a thread of its own before it listens.
#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QRegularExpression>
#include <QString>
#include <QTcpServer>
#include <QUrl>
#include <functional>

struct HttpRequest
{
    QByteArray method;
    QString path; // decoded, without the query
    QString query; // as sent, without the "?"
    QHash<QByteArray, QByteArray> headers; // names lower-cased
};

struct HttpResponse
{
    int status = 200;
    QByteArray contentType = "application/octet-stream";
    QByteArray body;
    QList<std::pair<QByteArray, QByteArray>> headers;
    int delayMs = 0; // wait this long before answering
    bool neverAnswer = false; // read the request and stay silent
    int dripIntervalMs = 0; // above 0: send the body one byte per interval
    // 0 or more: send this many bytes made by repeating body, with no length announced.
    qint64 generatedBytes = -1;
    // Above 0: send the body at this many bytes a second, with no length announced, as a live
    // stream comes.
    qint64 bytesPerSecond = 0;
    // Above 0: drop the connection this long after answering, as a server that cuts streams.
    int closeAfterMs = 0;

    static HttpResponse text(QByteArray body, QByteArray contentType = "text/plain",
                             int status = 200);
    static HttpResponse redirect(const QByteArray &location, int status = 302);
    static HttpResponse notFound();
    // The file at path, or the byte range the request asks of it.
    static HttpResponse file(const HttpRequest &request, const QString &path);
};

class LocalHttpServer final : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<HttpResponse(const HttpRequest &)>;

    explicit LocalHttpServer(QObject *parent = nullptr);
    ~LocalHttpServer() override;

    // Listens on 127.0.0.1; port 0 picks a free one.
    bool listen(quint16 port = 0);
    quint16 port() const;
    QUrl url(const QString &path) const;

    void route(const QString &path, HttpResponse response);
    void route(const QString &path, Handler handler);
    // Asked for paths that have no route of their own, before the files; an answer of status 0
    // passes the request on.
    void fallback(Handler handler) { m_fallback = std::move(handler); }
    // Paths without a route are files under root.
    void serveDirectory(const QString &root);
    // Requests whose path matches wait unanswered until the hold is lifted by an empty
    // expression; the held ones are then answered.
    void hold(const QRegularExpression &paths);
    int requestCount(const QString &path) const { return m_requestCounts.value(path); }
    // Connections that asked for path and are still open.
    int openConnectionCount(const QString &path) const { return m_openConnections.value(path); }
    // Requests held now whose client is still connected.
    int heldCount() const { return int(m_held.size()); }

private:
    class Connection;
    void accept();
    void dispatch(Connection *connection, const HttpRequest &request);
    HttpResponse fileResponse(const HttpRequest &request) const;

    QTcpServer m_server {this}; // a child, so that the server can move to another thread
    QHash<QString, Handler> m_routes;
    Handler m_fallback;
    QString m_root;
    QRegularExpression m_hold;
    QList<std::pair<Connection *, HttpRequest>> m_held;
    QHash<QString, int> m_requestCounts;
    QHash<QString, int> m_openConnections;
};
