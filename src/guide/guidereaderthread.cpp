#include "guidereaderthread.h"

GuideReaderThread::GuideReaderThread(XmltvReader &reader)
    : m_reader(reader)
    , m_thread([this] { run(); })
{ }

GuideReaderThread::~GuideReaderThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

bool GuideReaderThread::push(QByteArray block)
{
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_stopped || m_blocks.size() < maxQueuedBlocks; });
        if (m_stopped || m_ended)
            return false;
        m_blocks.push_back(std::move(block));
    }
    m_changed.notify_all();
    return !failed();
}

void GuideReaderThread::finish()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ended = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void GuideReaderThread::run()
{
    for (;;) {
        QByteArray block;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return m_stopped || m_ended || !m_blocks.empty(); });
            if (m_stopped)
                return;
            if (m_blocks.empty())
                break; // ended, and everything is read
            block = std::move(m_blocks.front());
            m_blocks.pop_front();
        }
        m_changed.notify_all(); // room for the next block
        if (!failed()) {
            m_reader.feed(block);
            if (m_reader.hasError())
                m_failed.store(true, std::memory_order_relaxed);
        }
    }
    m_reader.finish();
}
