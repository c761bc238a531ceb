#pragma once
// The entries one item leads to when its address, or an entry's, turns out to be a playlist (a
// radio link's .pls or .m3u that mpv reads), tried in turn until one plays: lists inside lists
// at most maxDepth levels deep, at most maxRequests loads for the item in all, and an entry may
// be a file of this computer only when the list naming it is one.
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

class PlaylistExpansion
{
public:
    static constexpr int maxDepth = 5;
    static constexpr int maxRequests = 20;

    // A new item, whose address is the first load.
    void start(const QUrl &url);
    void clear() { *this = {}; }

    // The address loaded last, and whether it may list files of this computer.
    const QUrl &current() const { return m_current.url; }
    bool currentIsLocal() const { return m_current.url.isLocalFile(); }

    // The address loaded last turned out to be a list of these entries (as mpv lists them,
    // already kept to where a channel may lead): they come before those left, in their order.
    // Entries of a list too deep are left out.
    void expand(const QList<QUrl> &entries);
    // The next entry to load, which becomes the current one; nothing when none is left or the
    // item has cost as much as it may.
    std::optional<QUrl> next();

    // How many entries the item's lists named, at every level.
    int namedEntries() const { return m_named; }
    int requests() const { return m_requests; }
    // Why the item failed once its lists named entries and none played; empty otherwise.
    QString failureReason() const;

private:
    struct Entry
    {
        QUrl url;
        int depth = 0; // lists it lies inside
    };
    Entry m_current;
    QList<Entry> m_left;
    int m_requests = 0;
    int m_named = 0;
};
