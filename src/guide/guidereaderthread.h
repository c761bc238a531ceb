#pragma once
// Reads a guide's unpacked blocks on a thread of its own, so that unpacking (or reading the
// file) and reading the XML overlap on two cores. Holds at most a few blocks at once: the
// thread that hands them over waits while the reader is behind.
#include "xmltvreader.h"

#include <QByteArray>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

class GuideReaderThread
{
public:
    static constexpr size_t maxQueuedBlocks = 8;

    // The reader is used by the thread until finish() returns or this is destroyed.
    explicit GuideReaderThread(XmltvReader &reader);
    // Stops reading (what is queued is dropped) and waits for the thread.
    ~GuideReaderThread();
    GuideReaderThread(const GuideReaderThread &) = delete;
    GuideReaderThread &operator=(const GuideReaderThread &) = delete;

    // Queues a block; false once the reader has met what it cannot read past, when nothing
    // more is wanted.
    bool push(QByteArray block);
    // Reads what is queued, finishes the reader and waits for the thread; the reader is the
    // caller's again.
    void finish();
    bool failed() const { return m_failed.load(std::memory_order_relaxed); }

private:
    void run();
    // What the reader asks for: the next size bytes of the queued blocks, across blocks and
    // waiting for them; fewer only at the end.
    qsizetype nextBytes(char *buffer, qsizetype size);

    XmltvReader &m_reader;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<QByteArray> m_blocks;
    bool m_ended = false; // no more blocks will come
    bool m_stopped = false; // leave at once
    bool m_done = false; // the reader has finished
    QByteArray m_block; // the block being read, on the thread
    qsizetype m_blockRead = 0;
    std::atomic<bool> m_failed = false;
    std::thread m_thread;
};
