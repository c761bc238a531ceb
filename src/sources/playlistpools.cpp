#include "playlistpools.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <cstring>

namespace {

// Counts user-perceived characters; country codes are short, so this stays cheap.
qsizetype characterCount(const QString &text)
{
    bool simple = true;
    for (QChar c : text) {
        if (c.unicode() >= 0x300) {
            simple = false;
            break;
        }
    }
    if (simple)
        return text.size();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() >= 0)
        ++count;
    return count;
}

} // namespace

std::optional<QString> twoCharacterCode(QStringView piece)
{
    QString code = piece.toString().toUpper();
    if (characterCount(code) != 2)
        return std::nullopt;
    return code;
}

const QString *TextPool::intern(QStringView text)
{
    if (text.isEmpty())
        return nullptr;
    // A list has few distinct groups, countries and header values: most are found among the
    // recent ones, by a slot their length and ends choose, before any hash is computed.
    const QString *&recent
        = m_recent[(size_t(text.size()) * 31 + text.front().unicode() * 7 + text.back().unicode())
                   % m_recent.size()];
    if (recent && recent->size() == text.size()
        && std::memcmp(recent->constData(), text.data(), size_t(text.size()) * sizeof(QChar)) == 0)
        return recent;
    auto it = m_texts.constFind(text);
    if (it == m_texts.constEnd()) {
        const QString &copy = m_stored.emplace_back(text.toString());
        it = m_texts.insert(QStringView(copy), &copy);
    }
    recent = *it;
    return recent;
}

const QString *TextPool::internCountryCode(QStringView piece)
{
    // Two ASCII characters, nearly every code, are upper-cased in place and looked up without a
    // copy.
    const auto ascii = [](QChar c) {
        return c.unicode() < 0x80;
    };
    if (!std::all_of(piece.begin(), piece.end(), ascii))
        return intern(twoCharacterCode(piece).value_or(QString()));
    if (piece.size() != 2)
        return nullptr;
    const auto upper = [](QChar c) {
        const char16_t u = c.unicode();
        return u >= u'a' && u <= u'z' ? char16_t(u - 32) : u;
    };
    const char16_t code[2] = {upper(piece[0]), upper(piece[1])};
    return intern(QStringView(code, 2));
}

QString TextPool::internHeaderValue(QStringView value)
{
    const auto isControl = [](QChar c) {
        return c.unicode() < 0x20 || c.unicode() == 0x7f;
    };
    const auto copyOf = [](const QString *pooled) {
        return pooled ? *pooled : QString();
    };
    if (std::none_of(value.begin(), value.end(), isControl))
        return copyOf(intern(value.trimmed()));
    m_cleaned.resize(0);
    for (const QChar c : value) {
        if (c.unicode() >= 0x20 && c.unicode() != 0x7f)
            m_cleaned.append(c);
    }
    return copyOf(intern(QStringView(m_cleaned).trimmed()));
}

namespace {

// As with texts, recent pairs are looked up in a slot their addresses choose first.
template<typename Slot, size_t size>
Slot &slotOf(std::array<Slot, size> &recent, std::pair<const void *, const void *> key)
{
    return recent[((quintptr(key.first) >> 4) * 31 + (quintptr(key.second) >> 4)) % size];
}

} // namespace

std::shared_ptr<const PlaylistEntryDetails> LabelsPool::labels(const QString *group,
                                                               const QString *country)
{
    if (!group && !country)
        return nullptr;
    const Key key {group, country};
    Recent &recent = slotOf(m_recent, key);
    if (recent.details && recent.key == key)
        return recent.details;
    std::shared_ptr<const PlaylistEntryDetails> &shared = m_labels[key];
    if (!shared) {
        shared = std::make_shared<const PlaylistEntryDetails>(
            PlaylistEntryDetails {std::make_shared<const PlaylistLabels>(PlaylistLabels {
                                      group ? *group : QString(), country ? *country : QString()}),
                                  nullptr});
    }
    recent = {key, shared};
    return shared;
}

std::shared_ptr<const PlaylistEntryDetails>
LabelsPool::withOptions(const std::shared_ptr<const PlaylistEntryDetails> &labels,
                        std::shared_ptr<const ChannelOptions> options)
{
    // The key's labels live in m_labels and its options in the details, so neither address
    // is reused while the slot holds them.
    const Key key {labels.get(), options.get()};
    Recent &recent = slotOf(m_recentWithOptions, key);
    if (!recent.details || recent.key != key) {
        recent = {key,
                  std::make_shared<const PlaylistEntryDetails>(PlaylistEntryDetails {
                      labels ? labels->labels : nullptr, std::move(options)})};
    }
    return recent.details;
}

std::shared_ptr<const ChannelOptions> OptionsPool::shared(ChannelOptions options)
{
    const auto seen = std::find_if(m_recent.begin(), m_recent.end(), [&](const auto &recent) {
        return recent && *recent == options;
    });
    if (seen != m_recent.end()) {
        std::rotate(m_recent.begin(), seen, seen + 1);
        return m_recent.front();
    }
    std::rotate(m_recent.begin(), m_recent.end() - 1, m_recent.end());
    m_recent.front() = std::make_shared<const ChannelOptions>(std::move(options));
    return m_recent.front();
}

UuidSource::UuidSource()
    : m_generator([] {
        std::array<quint32, 8> seed;
        QRandomGenerator::system()->fillRange(seed.data(), qsizetype(seed.size()));
        return QRandomGenerator(seed.data(), qsizetype(seed.size()));
    }())
{ }

QUuid UuidSource::next()
{
    quint32 words[4];
    m_generator.fillRange(words);
    // RFC 4122 version 4, variant 1.
    const auto w1 = ushort(words[1] >> 16);
    const auto w2 = ushort((words[1] & 0x0FFF) | 0x4000);
    return QUuid(words[0], w1, w2, uchar(((words[2] >> 24) & 0x3F) | 0x80), uchar(words[2] >> 16),
                 uchar(words[2] >> 8), uchar(words[2]), uchar(words[3] >> 24),
                 uchar(words[3] >> 16), uchar(words[3] >> 8), uchar(words[3]));
}
