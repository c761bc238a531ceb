#pragma once
// Reads an XMLTV guide as its unpacked bytes come, with libxml2's SAX parser pulling them from a
// source: the channels, and the programmes of the channels asked for within a time window,
// titles kept once each. Never holds more of the document than a few kilobytes at a time.
#include "guidechannels.h"
#include "guideschedule.h"

#include <QByteArrayView>
#include <QHash>
#include <QSet>
#include <QStringList>
#include <atomic>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

// One guide as read.
struct GuideRead
{
    std::vector<GuideChannel> channels;
    QHash<QString, std::vector<ReadProgramme>> programmes; // by channel id, in the order read
    QList<QByteArray> titles; // what the programmes' title indices point into, as UTF-8
};

class XmltvReader
{
public:
    struct Options
    {
        // Asked of each channel as it is read (the first declaration of an id only): whether
        // it and its programmes are kept. Unset: every channel's.
        std::function<bool(const GuideChannel &)> keepChannel;
        // Programmes whose stop (or start, without one) lies outside are not kept.
        qint64 keepFrom = std::numeric_limits<qint64>::min();
        qint64 keepUntil = std::numeric_limits<qint64>::max();
        // Asked of each channel kept: whether its past programmes are kept further back, from
        // archiveFrom (a channel whose provider keeps an archive). Unset: none's.
        std::function<bool(const GuideChannel &)> keepArchive;
        qint64 archiveFrom = std::numeric_limits<qint64>::min();
        // Set by the owner (from any thread) when the read is no longer wanted: it ends at the
        // next element or block of bytes.
        std::shared_ptr<const std::atomic<bool>> stop;
        // What a guide may keep, whatever its size: far more than the programmes of a real
        // guide's two days, far less than the machine's memory.
        qint64 maxKeptProgrammes = 2'000'000;
        qint64 maxTitleBytes = qint64(64) << 20;
    };

    // A title or display name is cut there (at a character's edge) as it is read.
    static constexpr int maxTextCharacters = 1000;
    // A channel's further display names are passed over.
    static constexpr int maxDisplayNames = 32;

    XmltvReader();
    explicit XmltvReader(Options options);
    ~XmltvReader();
    XmltvReader(const XmltvReader &) = delete;
    XmltvReader &operator=(const XmltvReader &) = delete;

    // Gives the next size bytes of the document into buffer and says how many: fewer only at
    // its end, as a file does (libxml2 takes a short read for the end of what is there). May
    // wait for them.
    using Source = std::function<qsizetype(char *buffer, qsizetype size)>;
    // Reads the whole document, asking source for its bytes as they are needed, until its end
    // or until it cannot be read past: a guide cut short keeps what was read. Once only.
    void read(const Source &source);
    // The same for a document held whole.
    void read(QByteArrayView document);

    const std::vector<GuideChannel> &channels() const { return m_channels; }
    // The kept programmes by channel id, each channel's in the order read.
    const QHash<QString, std::vector<ReadProgramme>> &programmes() const { return m_programmes; }
    // The titles programmes point into, as UTF-8.
    const QList<QByteArray> &titles() const { return m_titles; }
    // Everything read, moved out; the reader is spent.
    GuideRead take();
    qint64 programmeCount() const { return m_programmeCount; }
    // Programmes left out because the guide had kept as much as it may.
    qint64 programmesOverLimit() const { return m_programmesOverLimit; }
    // Programmes left out because their start or stop could not be read.
    int skippedProgrammes() const { return m_skipped; }
    // libxml2 met something it could not read past (not XML, cut short, broken): what came
    // before is kept. errorText says what, in libxml2's words.
    bool hasError() const { return !m_error.isEmpty(); }
    const QString &errorText() const { return m_error; }

private:
    struct Parser;
    friend struct Parser;

    // The elements a guide's reading turns on; the rest are passed over.
    enum class Element { channel, programme, displayName, title, other };
    // An element's attributes that matter, as libxml2 gives them (empty when absent).
    struct Attributes
    {
        QByteArrayView id;
        QByteArrayView channel;
        QByteArrayView start;
        QByteArrayView stop;
        QByteArrayView catchupId;
    };

    void startElement(Element element, const Attributes &attributes);
    void endElement(Element element);
    void text(QByteArrayView bytes);
    void endChannel();
    void endProgramme();
    // Makes channel the one programmes go to; false for a channel not asked for.
    bool programmesOf(QByteArrayView channel);
    quint32 intern(QByteArrayView title);

    Options m_options;
    std::unique_ptr<Parser> m_parser;
    std::vector<GuideChannel> m_channels;
    QHash<QString, std::vector<ReadProgramme>> m_programmes;
    QList<QByteArray> m_titles;
    // Looked up by a title's bytes without a copy; the keys view m_titles' blocks, which never
    // move.
    QHash<QByteArrayView, quint32> m_titleIndex;
    QSet<QString> m_keptChannels; // the ids of m_channels
    QSet<QString> m_archiveChannels; // those whose past programmes are kept from archiveFrom
    qint64 m_programmeCount = 0;
    qint64 m_programmesOverLimit = 0;
    qint64 m_titleBytes = 0;
    int m_skipped = 0;
    QString m_error;

    // Where the reader is in the document.
    enum class Place {
        outside,
        channel,
        displayName,
        programme,
        title,
    };
    Place m_place = Place::outside;
    QByteArray m_text;
    int m_textCharacters = 0; // in m_text; at the most, the rest of the text is passed over
    GuideChannel m_channel;
    std::optional<qint64> m_start; // nothing when it cannot be read
    std::optional<qint64> m_stop;
    std::optional<quint32> m_title;
    quint32 m_catchupId = 0;
    QByteArray m_lastChannel;
    bool m_lastChannelKnown = false;
    bool m_lastWanted = false;
    qint64 m_lastKeepFrom = 0;
    QString m_lastId;
    std::vector<ReadProgramme> *m_lastProgrammes = nullptr; // null until it has one
    int m_skipDepth = 0; // elements inside a programme or channel that are not read
    bool m_unreadableTimes = false; // the programme passed over has a start or stop unread
};
