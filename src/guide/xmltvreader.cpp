#include "xmltvreader.h"

#include "xmltvtime.h"

#include <libxml/entities.h>
#include <libxml/parser.h>

#include <atomic>
#include <cstring>

// Owns libxml2's parser context; its callbacks call back into the reader.
struct XmltvReader::Parser
{
    xmlSAXHandler sax {};
    xmlParserCtxtPtr context = nullptr;
    const XmltvReader::Source *source = nullptr; // while reading
    const std::atomic<bool> *stop = nullptr;

    bool stopped() const { return stop && stop->load(std::memory_order_relaxed); }
    // Ends the read at the next callback once the owner has asked it to stop.
    bool stopIfAsked()
    {
        if (!stopped())
            return false;
        xmlStopParser(context);
        return true;
    }
    qint64 bytesRead = 0;

    // The names that matter, as the context's dictionary holds them: libxml2 hands over names
    // from that dictionary, so that they are told apart by address rather than by their text.
    struct Names
    {
        const xmlChar *channel = nullptr;
        const xmlChar *programme = nullptr;
        const xmlChar *displayName = nullptr;
        const xmlChar *title = nullptr;
        const xmlChar *id = nullptr;
        const xmlChar *start = nullptr;
        const xmlChar *stop = nullptr;
        const xmlChar *catchupId = nullptr;
    } names;

    void lookUpNames()
    {
        const auto lookUp = [this](const char *name) {
            return xmlDictLookup(context->dict, reinterpret_cast<const xmlChar *>(name), -1);
        };
        names = {lookUp("channel"), lookUp("programme"), lookUp("display-name"),
                 lookUp("title"),   lookUp("id"),        lookUp("start"),
                 lookUp("stop"),    lookUp("catchup-id")};
    }

    // Compared by address, or by text should the dictionary not have the name.
    static bool same(const xmlChar *name, const xmlChar *known, const char *text)
    {
        return known ? name == known : std::strcmp(reinterpret_cast<const char *>(name), text) == 0;
    }

    XmltvReader::Element element(const xmlChar *name) const
    {
        if (same(name, names.programme, "programme"))
            return XmltvReader::Element::programme;
        if (same(name, names.title, "title"))
            return XmltvReader::Element::title;
        if (same(name, names.channel, "channel"))
            return XmltvReader::Element::channel;
        if (same(name, names.displayName, "display-name"))
            return XmltvReader::Element::displayName;
        return XmltvReader::Element::other;
    }

    ~Parser()
    {
        if (context) {
            xmlFreeDoc(context->myDoc);
            xmlFreeParserCtxt(context);
        }
    }

    // Callbacks are given the reader rather than libxml2's context: with the context as its
    // user data, libxml2 would look entities up among those the document declares itself.
    static XmltvReader *reader(void *userData) { return static_cast<XmltvReader *>(userData); }

    // Only XML's own five entities (which libxml2 knows before asking) and character
    // references are read: any other entity, declared by the guide or not, reads as nothing,
    // so that a few hundred bytes of nested or repeated declarations cannot become gigabytes of
    // text or hours of work. It is handed over as one of XML's own, with no text: an entity
    // libxml2 could not find would make it drop every later &amp; of the guide.
    // Parameter entities, in the document's type declaration, read as nothing the same way.
    static xmlEntity emptyEntity(xmlEntityType type)
    {
        xmlEntity entity {};
        entity.type = XML_ENTITY_DECL;
        entity.name = reinterpret_cast<const xmlChar *>("");
        entity.etype = type;
        entity.content = const_cast<xmlChar *>(reinterpret_cast<const xmlChar *>(""));
        entity.orig = entity.content;
        return entity;
    }
    static xmlEntityPtr getEntity(void *, const xmlChar *)
    {
        static xmlEntity nothing = emptyEntity(XML_INTERNAL_PREDEFINED_ENTITY);
        return &nothing;
    }
    static xmlEntityPtr getParameterEntity(void *, const xmlChar *)
    {
        static xmlEntity nothing = emptyEntity(XML_INTERNAL_PARAMETER_ENTITY);
        return &nothing;
    }

    static void startElement(void *userData, const xmlChar *name, const xmlChar *, const xmlChar *,
                             int, const xmlChar **, int attributeCount, int,
                             const xmlChar **attributes)
    {
        XmltvReader *const reader = Parser::reader(userData);
        Parser &parser = *reader->m_parser;
        if (parser.stopIfAsked())
            return;
        // Attributes come as (name, prefix, URI, value start, value end) quintuples; the first
        // of a name counts.
        XmltvReader::Attributes wanted;
        for (int i = 0; i < attributeCount; ++i) {
            const xmlChar **entry = attributes + 5 * i;
            QByteArrayView value(reinterpret_cast<const char *>(entry[3]), entry[4] - entry[3]);
            // An entity that reads as nothing leaves its first character, none, in a value.
            if (const void *nul = std::memchr(value.data(), 0, size_t(value.size())))
                value.truncate(static_cast<const char *>(nul) - value.data());
            QByteArrayView *slot = nullptr;
            if (parser.same(entry[0], parser.names.channel, "channel"))
                slot = &wanted.channel;
            else if (parser.same(entry[0], parser.names.start, "start"))
                slot = &wanted.start;
            else if (parser.same(entry[0], parser.names.stop, "stop"))
                slot = &wanted.stop;
            else if (parser.same(entry[0], parser.names.id, "id"))
                slot = &wanted.id;
            else if (parser.same(entry[0], parser.names.catchupId, "catchup-id"))
                slot = &wanted.catchupId;
            if (slot && slot->isNull())
                *slot = value.isNull() ? QByteArrayView("", 0) : value;
        }
        reader->startElement(parser.element(name), wanted);
    }
    static void endElement(void *userData, const xmlChar *name, const xmlChar *, const xmlChar *)
    {
        XmltvReader *const reader = Parser::reader(userData);
        reader->endElement(reader->m_parser->element(name));
    }
    static void characters(void *userData, const xmlChar *text, int length)
    {
        reader(userData)->text(QByteArrayView(reinterpret_cast<const char *>(text), length));
    }
    static int readSource(void *parser, char *buffer, int size)
    {
        Parser &self = *static_cast<Parser *>(parser);
        const qsizetype count = (*self.source)(buffer, size);
        self.bytesRead += count;
        return self.stopped() ? -1 : int(count);
    }
    // Errors are collected, not printed: the reader says what went wrong.
    static void error(void *, const char *, ...) { }
};

XmltvReader::XmltvReader()
    : XmltvReader(Options {})
{ }

XmltvReader::XmltvReader(Options options)
    : m_options(std::move(options))
    , m_parser(std::make_unique<Parser>())
{
    xmlSAXHandler &sax = m_parser->sax;
    sax.initialized = XML_SAX2_MAGIC;
    sax.startElementNs = &Parser::startElement;
    sax.endElementNs = &Parser::endElement;
    sax.characters = &Parser::characters;
    sax.cdataBlock = &Parser::characters;
    sax.getEntity = &Parser::getEntity;
    sax.getParameterEntity = &Parser::getParameterEntity;
    sax.error = &Parser::error;
    sax.warning = &Parser::error;
}

XmltvReader::~XmltvReader() = default;

void XmltvReader::read(const Source &source)
{
    Parser &parser = *m_parser;
    if (parser.context)
        return;
    parser.source = &source;
    parser.stop = m_options.stop.get();
    parser.context = xmlCreateIOParserCtxt(&parser.sax, this, &Parser::readSource, nullptr, &parser,
                                           XML_CHAR_ENCODING_NONE);
    if (!parser.context) {
        m_error = QStringLiteral("the XML reader could not start");
        return;
    }
    if (parser.context->dict)
        parser.lookUpNames();
    // Recover from what can be recovered and never fetch anything. libxml2's limits on the
    // size of one name, text or nesting stay on: no real guide comes near them.
    xmlCtxtUseOptions(parser.context,
                      XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_NOWARNING
                          | XML_PARSE_NOERROR);
    xmlParseDocument(parser.context);
    parser.source = nullptr;
    if (parser.bytesRead == 0) {
        m_error = QStringLiteral("the guide is empty");
    } else if (!parser.context->wellFormed) {
        const xmlError *error = xmlCtxtGetLastError(parser.context);
        m_error = error && error->message ? QString::fromUtf8(error->message).trimmed()
                                          : QStringLiteral("the guide is not well-formed XML");
    }
    // A programme cut off by the end is not kept; channels named so far are.
    if (m_place == Place::channel || m_place == Place::displayName)
        endChannel();
    m_place = Place::outside;
}

void XmltvReader::read(QByteArrayView document)
{
    qsizetype at = 0;
    read([&](char *buffer, qsizetype size) {
        const qsizetype count = std::min(size, document.size() - at);
        if (count > 0)
            std::memcpy(buffer, document.data() + at, size_t(count));
        at += count;
        return count;
    });
}

void XmltvReader::startElement(Element element, const Attributes &attributes)
{
    if (m_skipDepth > 0) {
        ++m_skipDepth;
        return;
    }
    switch (m_place) {
    case Place::outside:
        if (element == Element::channel) {
            m_place = Place::channel;
            m_channel = GuideChannel {QString::fromUtf8(attributes.id), {}};
        } else if (element == Element::programme) {
            if (!programmesOf(attributes.channel)) {
                m_skipDepth = 1; // a channel not asked for: nothing in it is read
                return;
            }
            m_start = XmltvTime::parse(attributes.start);
            const QByteArrayView stop = attributes.stop;
            m_stop = stop.isEmpty() ? std::nullopt : XmltvTime::parse(stop);
            // A programme that is not kept is passed over whole, its title unread.
            if (!m_start || (!stop.isEmpty() && !m_stop)) {
                // Counted at its end: one cut off by the end of the guide is not counted.
                m_unreadableTimes = true;
                m_skipDepth = 1;
                return;
            }
            if (m_stop.value_or(*m_start) < m_lastKeepFrom || *m_start > m_options.keepUntil) {
                m_skipDepth = 1;
                return;
            }
            if (m_programmeCount >= m_options.maxKeptProgrammes
                || m_titleBytes >= m_options.maxTitleBytes) {
                ++m_programmesOverLimit;
                m_skipDepth = 1;
                return;
            }
            m_place = Place::programme;
            m_title.reset();
            const QByteArrayView catchupId = attributes.catchupId.trimmed();
            m_catchupId = catchupId.isEmpty()
                ? 0
                : intern(catchupId.first(std::min<qsizetype>(catchupId.size(), maxTextCharacters)))
                    + 1;
        }
        return;
    case Place::channel:
        if (element == Element::displayName) {
            m_place = Place::displayName;
            m_text.clear();
            m_textCharacters = 0;
        } else {
            m_skipDepth = 1;
        }
        return;
    case Place::programme:
        if (element == Element::title && !m_title) {
            m_place = Place::title;
            m_text.clear();
            m_textCharacters = 0;
        } else {
            m_skipDepth = 1;
        }
        return;
    case Place::displayName:
    case Place::title:
        // Markup inside a name: its text counts, the element itself does not.
        m_skipDepth = 0;
        return;
    }
}

void XmltvReader::endElement(Element element)
{
    if (m_skipDepth > 0) {
        if (--m_skipDepth == 0 && m_unreadableTimes) {
            ++m_skipped;
            m_unreadableTimes = false;
        }
        return;
    }
    switch (m_place) {
    case Place::outside:
        return;
    case Place::channel:
        if (element == Element::channel) {
            endChannel();
            m_place = Place::outside;
        }
        return;
    case Place::displayName:
        if (element == Element::displayName) {
            const QString displayName = QString::fromUtf8(m_text).trimmed();
            if (!displayName.isEmpty() && m_channel.displayNames.size() < maxDisplayNames)
                m_channel.displayNames.append(displayName);
            m_place = Place::channel;
        }
        return;
    case Place::programme:
        if (element == Element::programme) {
            endProgramme();
            m_place = Place::outside;
        }
        return;
    case Place::title:
        if (element == Element::title) {
            m_title = intern(QByteArrayView(m_text).trimmed());
            m_place = Place::programme;
        }
        return;
    }
}

void XmltvReader::text(QByteArrayView bytes)
{
    if (m_skipDepth != 0 || (m_place != Place::displayName && m_place != Place::title)
        || m_textCharacters >= maxTextCharacters)
        return;
    if (m_text.isEmpty()) // leading white space does not count towards the length
        bytes = bytes.sliced(std::find_if(bytes.begin(), bytes.end(),
                                          [](char c) { return !QChar::isSpace(uchar(c)); })
                             - bytes.begin());
    // Characters are counted by their first bytes; the text ends before the first one too many.
    qsizetype end = 0;
    for (; end < bytes.size(); ++end) {
        if ((uchar(bytes[end]) & 0xc0) != 0x80 && m_textCharacters++ == maxTextCharacters) {
            m_textCharacters = maxTextCharacters;
            break;
        }
    }
    m_text.append(bytes.first(end));
}

bool XmltvReader::programmesOf(QByteArrayView channel)
{
    // A guide lists a channel's programmes one after another: the last channel is kept at hand.
    if (m_lastChannelKnown && channel == QByteArrayView(m_lastChannel))
        return m_lastWanted;
    m_lastId = QString::fromUtf8(channel);
    m_lastChannel = channel.toByteArray();
    m_lastChannelKnown = true;
    m_lastWanted = !m_options.keepChannel || m_keptChannels.contains(m_lastId);
    m_lastKeepFrom
        = m_archiveChannels.contains(m_lastId) ? m_options.archiveFrom : m_options.keepFrom;
    // Made when its first programme is kept; inserting may move the others' lists, so only
    // the last one is kept by address.
    const auto found = m_programmes.find(m_lastId);
    m_lastProgrammes = found == m_programmes.end() ? nullptr : &*found;
    return m_lastWanted;
}

void XmltvReader::endChannel()
{
    GuideChannel channel = std::exchange(m_channel, {});
    // The first declaration of an id wins; a guide repeating one costs nothing more.
    if (channel.id.isEmpty() || m_keptChannels.contains(channel.id))
        return;
    if (m_options.keepChannel && !m_options.keepChannel(channel))
        return;
    m_keptChannels.insert(channel.id);
    if (m_options.keepArchive && m_options.keepArchive(channel))
        m_archiveChannels.insert(channel.id);
    if (m_lastChannelKnown && m_lastId == channel.id)
        m_lastChannelKnown = false; // its programmes may be kept from now on
    m_channels.push_back(std::move(channel));
}

void XmltvReader::endProgramme()
{
    if (!m_lastProgrammes)
        m_lastProgrammes = &m_programmes[m_lastId];
    m_lastProgrammes->push_back(
        ReadProgramme {*m_start, m_stop, m_title ? *m_title : intern({}), m_catchupId});
    ++m_programmeCount;
}

quint32 XmltvReader::intern(QByteArrayView title)
{
    // Looked up by its bytes: a title seen before costs nothing.
    const auto found = m_titleIndex.constFind(title);
    if (found != m_titleIndex.constEnd())
        return *found;
    const auto index = quint32(m_titles.size());
    m_titles.append(title.toByteArray());
    m_titleBytes += title.size();
    m_titleIndex.insert(QByteArrayView(m_titles.constLast()), index);
    return index;
}

GuideRead XmltvReader::take()
{
    m_titleIndex.clear();
    m_keptChannels.clear();
    m_archiveChannels.clear();
    return {std::move(m_channels), std::move(m_programmes), std::move(m_titles)};
}
