#pragma once
// Runs a local HTTP server on a thread of its own for as long as this lives, so that writing
// tens of megabytes is the server's work, not the measured main thread's.
#include "httpserver/localhttpserver.h"

#include <QCoreApplication>
#include <QThread>

class ServerThread
{
public:
    // The server is set up (routes, folder) before; it listens once on its thread.
    explicit ServerThread(LocalHttpServer &server)
        : m_server(server)
    {
        m_server.moveToThread(&m_thread);
        m_thread.start();
        QMetaObject::invokeMethod(
            &m_server, [this] { m_listening = m_server.listen(); }, Qt::BlockingQueuedConnection);
    }
    ~ServerThread()
    {
        QMetaObject::invokeMethod(
            &m_server, [this] { m_server.moveToThread(QCoreApplication::instance()->thread()); },
            Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }
    ServerThread(const ServerThread &) = delete;
    ServerThread &operator=(const ServerThread &) = delete;

    bool isListening() const { return m_listening; }

private:
    LocalHttpServer &m_server;
    QThread m_thread;
    bool m_listening = false;
};
