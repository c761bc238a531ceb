#include "guidereaderthread.h"

#include <cstring>

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
        m_changed.wait(lock,
                       [this] { return m_stopped || m_done || m_blocks.size() < maxQueuedBlocks; });
        if (m_stopped || m_ended || m_done)
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
    m_reader.read([this](char *buffer, qsizetype size) { return nextBytes(buffer, size); });
    if (m_reader.hasError())
        m_failed.store(true, std::memory_order_relaxed);
    {
        const std::lock_guard lock(m_mutex);
        m_done = true;
        m_blocks.clear();
    }
    m_changed.notify_all();
}

qsizetype GuideReaderThread::nextBytes(char *buffer, qsizetype size)
{
    qsizetype given = 0;
    while (given < size) {
        if (m_blockRead == m_block.size()) {
            {
                std::unique_lock lock(m_mutex);
                m_changed.wait(lock, [this] { return m_stopped || m_ended || !m_blocks.empty(); });
                if (m_stopped || m_blocks.empty())
                    return given; // the end: stopped, or everything is read
                m_block = std::move(m_blocks.front());
                m_blocks.pop_front();
                m_blockRead = 0;
            }
            m_changed.notify_all(); // room for the next block
            continue;
        }
        const qsizetype count = std::min(size - given, m_block.size() - m_blockRead);
        std::memcpy(buffer + given, m_block.constData() + m_blockRead, size_t(count));
        m_blockRead += count;
        given += count;
    }
    return given;
}
