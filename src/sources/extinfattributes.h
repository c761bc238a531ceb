#pragma once

// The quoted attributes of one #EXTINF line (name="value") and where its title begins. The
// places where values open are found once, so that each lookup compares names only there.

#include <QStringView>
#include <QVarLengthArray>

#include <array>

#include <optional>

class ExtinfAttributes
{
public:
    explicit ExtinfAttributes(QStringView line);

    // The value of name="...": at the first place where name, compared case-insensitively,
    // stands right before the "=\"", the trimmed text up to the next quote. Nothing when that
    // quote is missing or the value is empty.
    std::optional<QStringView> value(QStringView name) const;

    // Names looked up together, made once: a line's values are then found in one pass.
    class NameSet
    {
    public:
        NameSet(std::initializer_list<QStringView> names)
            : NameSet(names.begin(), qsizetype(names.size()))
        { }
        NameSet(const QStringView *names, qsizetype count);
        qsizetype size() const { return m_names.size(); }

    private:
        friend class ExtinfAttributes;
        struct Name
        {
            QStringView text;
            quint64 tail = 0; // as Place::tail
            quint64 mask = 0; // the bytes of tail that count
            bool asciiTail = false;
        };
        QVarLengthArray<Name, 32> m_names;
        // The names, as bits by their place in m_names, that end in each ASCII character
        // (lower-cased); a line's value is only compared with those its name's last one gives.
        std::array<quint32, 128> m_endingIn {};
    };
    using Values = QVarLengthArray<std::optional<QStringView>, 32>;
    // value() of each name of the set, in its order.
    Values values(const NameSet &names) const;

    // The first comma outside the quoted values, after which the title begins (a user agent
    // reads "KHTML, like Gecko"); with a quote left open, the first comma of all. -1 for none.
    qsizetype titleComma() const;

private:
    struct Place
    {
        qsizetype equals = 0; // where the "=" is
        qsizetype closing = -1; // the quote that ends the value, -1 for none
        // The up to eight characters before the "=", lower-cased, the nearest in the lowest
        // byte; when they are all ASCII, a name is told apart from them by one comparison.
        quint64 tail = 0;
        bool asciiTail = true;
    };

    bool nameEndsAt(const Place &place, QStringView name, quint64 nameTail) const;

    QStringView m_line;
    QVarLengthArray<Place, 16> m_places;
    QVarLengthArray<qsizetype, 8> m_commas; // where they are, in order
};
