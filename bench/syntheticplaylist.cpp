#include "syntheticplaylist.h"

#include <QRandomGenerator>
#include <QString>
#include <iterator>

namespace {

const char *const groups[]
    = {"News",          "Sports",  "Movies",   "Kids", "Music",   "Documentary",
       "Entertainment", "Религия", "Ειδήσεις", "综合", "Général", "Cine"};
const char *const countries[]
    = {"us", "gb", "de", "fr", "es", "it", "ru", "cn", "br", "in", "us;ca", "jp"};
const char *const names[]
    = {"Channel %1 HD", "Télé %1 (720p)", "Канал %1", "新闻 %1", "Ελληνικό %1 [Geo-blocked]",
       "Sport %1 +1",   "Cinéma %1 4K"};

} // namespace

QByteArray makeSyntheticPlaylist(int count)
{
    QRandomGenerator random(20261121);
    QString text = QStringLiteral("#EXTM3U x-tvg-url=\"http://epg.example.net/guide.xml.gz\"\r\n");
    text.reserve(qsizetype(count) * 330);
    for (int i = 0; i < count; ++i) {
        const QString name = QString::fromUtf8(names[i % std::size(names)]).arg(i);
        const QString country
            = QString::fromLatin1(countries[random.bounded(int(std::size(countries)))]);
        const QString group = QString::fromUtf8(groups[random.bounded(int(std::size(groups)))]);
        const QString token
            = QString::number(random.generate64(), 36) + QString::number(random.generate64(), 36);
        text += QStringLiteral("#EXTINF:-1 tvg-id=\"Channel%1.%2@SD\" tvg-name=\"%3\" "
                               "tvg-logo=\"https://logos.example.com/images/channels/%1/logo.png\" "
                               "tvg-country=\"%4\" group-title=\"%5\",%3\r\n")
                    .arg(i)
                    .arg(country.left(2), name, country, group);
        if (i % 10 == 0)
            text
                += QStringLiteral("#EXTVLCOPT:http-user-agent=Mozilla/5.0 (X11; Linux x86_64)\r\n");
        if (i % 25 == 0) {
            text += QStringLiteral("streams/%1/index.m3u8\r\n").arg(i);
        } else {
            text += QStringLiteral("http://line.provider-%1.example.com:8080/live/user%2/%3/%4.ts"
                                   "?token=%5&expires=1767225600\r\n")
                        .arg(i % 17)
                        .arg(i % 1000)
                        .arg(token.left(12))
                        .arg(i)
                        .arg(token);
        }
    }
    return text.toUtf8();
}

namespace {

const char *const scripts[]
    = {"新闻", "Новости", "체육", "映画", "Спорт", "综合", "ニュース", "Кино"};
const char *const catchups[]
    = {"catchup=\"flussonic\" catchup-days=\"7\"", "catchup=\"xc\" catchup-days=\"3\"",
       "catchup=\"shift\" catchup-days=\"5\" catchup-correction=\"-1.5\"",
       "catchup=\"default\" catchup-source=\"http://arc.example.net/{utc}/{utcend}/%1.m3u8\" "
       "catchup-days=\"2\""};

} // namespace

QByteArray makeProviderShapedPlaylist(int count)
{
    QRandomGenerator random(20261126);
    QString text = QStringLiteral("#EXTM3U url-tvg=\"http://epg.example.net/xmltv.php?username="
                                  "u1&password=p1\" tvg-shift=\"0\"\r\n");
    text.reserve(qsizetype(count) * 300);
    for (int i = 0; i < count; ++i) {
        const QString script = QString::fromUtf8(scripts[i % std::size(scripts)]);
        const QString name = QStringLiteral("%1 %2 HD").arg(script).arg(i);
        const QString group = QString::fromUtf8(groups[random.bounded(int(std::size(groups)))]);
        text += QStringLiteral("#EXTINF:-1 tvg-id=\"%1%2.%3\" tvg-name=\"%4\" "
                               "tvg-logo=\"http://logo.example.net/p/%2.png\"")
                    .arg(script)
                    .arg(i)
                    .arg(i % 2 ? QStringLiteral("cn") : QStringLiteral("ru"), name);
        if (i % 2 == 0)
            text += QStringLiteral(" tvg-country=\"%1\"")
                        .arg(QString::fromLatin1(
                            countries[random.bounded(int(std::size(countries)))]));
        if (i % 4 == 1) {
            text += QStringLiteral(" http-user-agent=\"Mozilla/5.0 (SMART-TV; Linux; Tizen 6.0)\" ")
                + QString::fromUtf8(catchups[(i / 4) % std::size(catchups)])
                      .replace(QStringLiteral("%1"), QString::number(i));
        }
        text += QStringLiteral(" group-title=\"%1\",%2\r\n").arg(group, name);
        if (i % 3 == 0) {
            text += QStringLiteral("live/u1/p1/%1.ts\r\n").arg(i);
        } else {
            text += QStringLiteral("http://cdn%1.example.net:8080/live/u1/p1/%2.ts\r\n")
                        .arg(i % 9)
                        .arg(i);
        }
    }
    return text.toUtf8();
}
