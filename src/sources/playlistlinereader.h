#pragma once
// Reads a playlist's lines one at a time into entries: what #EXTINF and #EXTVLCOPT lines say is
// kept for the address line that follows. One reader per thread; a large list is read in parts,
// a reader to each thread.
#include "catchupsettings.h"
#include "entrytextarena.h"
#include "playlistentry.h"
#include "playlistpools.h"
#include "streamheaders.h"

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <optional>
#include <string>

class PlaylistLineReader
{
public:
    // Relative addresses are resolved against baseURL; headerCatchup is the #EXTM3U line's.
    PlaylistLineReader(const QUrl &baseURL, CatchupAttributes headerCatchup);

    // One line, untrimmed; ascii is its bytes when it is plain ASCII, else null. A null line
    // with some bytes is plain ASCII that is neither blank nor a comment (see PlaylistLines::walk).
    void read(QStringView line, QByteArrayView ascii = {});
    // Forgets what was pending, before a part of a list that begins with an #EXTINF line.
    void startPart();
    qsizetype size() const { return m_entries.size(); }
    // Room for about this many entries, reserved before the first, in huge pages.
    void expect(qsizetype entries);
    // Not squeezed: squeezing copies every entry into new memory, while the spare capacity of a
    // big list is address space the process never touches.
    QList<PlaylistEntry> take() { return std::move(m_entries); }
    // Moves the entries read so far into slots, room for size() entries, and keeps the room
    // they had for the next ones.
    void moveEntriesTo(PlaylistEntry *slots);

private:
    // What an #EXTINF line says about the next address. The texts keep their buffers from entry to
    // entry: a huge list then allocates nothing here.
    struct PendingInfo
    {
        // Standard strings: emptied and refilled inline, as every entry does several times.
        std::u16string name;
        QByteArray logo;
        const QString *group = nullptr; // in the reader's TextPool, which outlives it
        const QString *country = nullptr;
        std::u16string tvgId;
        std::u16string tvgName;
        std::optional<qint32> shiftSeconds;

        void clear()
        {
            name.clear();
            if (!logo.isEmpty())
                logo.resize(0);
            group = nullptr;
            country = nullptr;
            tvgId.clear();
            tvgName.clear();
            shiftSeconds.reset();
        }
    };

    void readExtinf(QStringView line, QByteArrayView ascii);
    void readVlcOption(QStringView line);
    void readAddress(QStringView line, QByteArrayView ascii);

    QUrl m_baseURL;
    QByteArray m_baseDirectory; // relative addresses are resolved without QUrl against it
    PendingInfo m_pending;
    QByteArray m_address; // reused from line to line
    StreamHeaders m_pendingHeaders;
    CatchupAttributes m_pendingCatchup;
    CatchupAttributes m_headerCatchup; // the #EXTM3U line's, which an entry's own replace
    OptionsPool m_options;
    TextPool m_pool; // before m_labels, whose keys point into it
    LabelsPool m_labels;
    EntryTextArena m_arena;
    UuidSource m_uuids;
    QList<PlaylistEntry> m_entries;
};

// The last non-empty dot-separated piece of a tvg-id such as "cnn.us" or "One.uk@SD", before the
// first "@" (leading "@"s skipped).
std::optional<QStringView> countryPieceOfTvgId(QStringView value);
// The first piece of a list such as "us;ca" or "de, at".
std::optional<QStringView> countryPieceOfList(QStringView value);

// The memory of a huge list's entries is all new: it is asked for in huge pages.
void adviseHugePages(const QList<PlaylistEntry> &entries);
