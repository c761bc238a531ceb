#include "youtubepage.h"

#include <QtGlobal>
#include <utility>

namespace YouTubePage {

namespace {

constexpr QStringView pageHead = uR"(<!doctype html>
<html>
<head>
  <meta charset="utf-8">
  <meta name="referrer" content="strict-origin-when-cross-origin">
  <meta name="viewport" content="width=device-width,initial-scale=1">
  <style>
    html, body, #player { margin: 0; width: 100%; height: 100%; overflow: hidden; background: #000; }
    iframe { width: 100%; height: 100%; border: 0; }
  </style>
</head>
<body>
  <div id="player"></div>
  <script src=")";

constexpr QStringView playerVariables = uR"("></script>
  <script>
    var player;
    function onYouTubeIframeAPIReady() {
      var vars = {
        autoplay: 1,
        controls: 1,
        playsinline: 1,
        rel: 0,
        enablejsapi: 1,
        origin: )";

constexpr QStringView videoDeclaration = uR"(
      };
      var videoID = )";

constexpr QStringView playlistDeclaration = u";\n      var playlistID = ";

constexpr QStringView pageRest = uR"(;
      if (playlistID) {
        vars.listType = 'playlist';
        vars.list = playlistID;
      }
      var options = {
        width: '100%',
        height: '100%',
        playerVars: vars,
        events: {
          onReady: function (e) { e.target.playVideo(); }
        }
      };
      if (videoID) {
        options.videoId = videoID;
      }
      player = new YT.Player('player', options);
    }
    function lumoToggle() {
      if (!player || !player.getPlayerState) { return; }
      if (player.getPlayerState() === YT.PlayerState.PLAYING) {
        player.pauseVideo();
      } else {
        player.playVideo();
      }
    }
    function lumoSkip(seconds) {
      if (!player || !player.getCurrentTime) { return; }
      player.seekTo(Math.max(0, player.getCurrentTime() + seconds), true);
    }
    function lumoSetVolume(value) {
      if (!player) { return; }
      player.unMute();
      player.setVolume(Math.round(value * 100));
    }
    function lumoSetMuted(muted) {
      if (!player) { return; }
      if (muted) { player.mute(); } else { player.unMute(); }
    }
  </script>
</body>
</html>
)";

// JSON's two-character escapes, with "\/" as the platform serialisers write it.
QStringView shortEscape(char16_t unit)
{
    static constexpr std::pair<char16_t, QStringView> escapes[] = {
        {u'"', u"\\\""}, {u'\\', u"\\\\"}, {u'/', u"\\/"},  {u'\b', u"\\b"},
        {u'\f', u"\\f"}, {u'\n', u"\\n"},  {u'\r', u"\\r"}, {u'\t', u"\\t"},
    };
    for (const auto &[character, escape] : escapes) {
        if (character == unit)
            return escape;
    }
    return {};
}

// Control characters; "<", ">" and "&", which could open a comment or a tag inside the script
// element; U+2028 and U+2029, which end a line in older script engines.
bool needsUnicodeEscape(char16_t unit)
{
    return unit < 0x20 || unit == u'<' || unit == u'>' || unit == u'&' || unit == 0x2028
        || unit == 0x2029;
}

void appendUnicodeEscape(QString &out, char16_t unit)
{
    out += u"\\u";
    out += QString::number(unit, 16).rightJustified(4, u'0').toUpper();
}

bool hasLoneSurrogate(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text[i];
        if (unit.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        else if (unit.isSurrogate())
            return true;
    }
    return false;
}

} // namespace

std::optional<QString> httpsOrigin(const QString &text)
{
    const QUrl url(text.trimmed(), QUrl::StrictMode);
    if (!url.isValid() || url.scheme().compare(u"https", Qt::CaseInsensitive) != 0
        || url.host().isEmpty() || !url.userInfo().isEmpty() || url.hasQuery() || url.hasFragment()
        || !(url.path().isEmpty() || url.path() == u"/"))
        return std::nullopt;
    QString origin = QStringLiteral("https://") + url.host(QUrl::FullyEncoded).toLower();
    if (url.port() != -1 && url.port() != 443)
        origin += u':' + QString::number(url.port());
    return origin;
}

QString webOrigin()
{
    const QString configured = qEnvironmentVariable(webOriginVariable);
    if (!configured.isEmpty()) {
        if (const auto origin = httpsOrigin(configured))
            return *origin;
    }
    return defaultWebOrigin.toString();
}

QUrl baseUrl(const QString &origin)
{
    return QUrl(origin + u'/');
}

QString javascriptString(const std::optional<QString> &value)
{
    if (!value || hasLoneSurrogate(*value))
        return QStringLiteral("null");
    QString out;
    out.reserve(value->size() + 2);
    out += u'"';
    for (const QChar character : *value) {
        const char16_t unit = character.unicode();
        if (const QStringView escape = shortEscape(unit); !escape.isEmpty())
            out += escape;
        else if (needsUnicodeEscape(unit))
            appendUnicodeEscape(out, unit);
        else
            out += character;
    }
    out += u'"';
    return out;
}

QString html(const YouTubeContent &content, const QString &origin)
{
    const QString videoLiteral = javascriptString(content.videoID());
    const QString playlistLiteral = javascriptString(content.playlistID());
    const QString originLiteral = javascriptString(origin);
    QString page;
    page.reserve(pageHead.size() + apiScriptAddress.size() + playerVariables.size()
                 + originLiteral.size() + videoDeclaration.size() + videoLiteral.size()
                 + playlistDeclaration.size() + playlistLiteral.size() + pageRest.size());
    page += pageHead;
    page += apiScriptAddress;
    page += playerVariables;
    page += originLiteral;
    page += videoDeclaration;
    page += videoLiteral;
    page += playlistDeclaration;
    page += playlistLiteral;
    page += pageRest;
    return page;
}

} // namespace YouTubePage
