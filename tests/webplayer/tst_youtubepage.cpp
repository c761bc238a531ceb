// The generated player page, piece by piece and byte for byte, and the escaping of identifiers.
#include "webplayer/youtubepage.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
YouTubeContent content(std::optional<QString> video, std::optional<QString> playlist)
{
    return *YouTubeContent::make(std::move(video), std::move(playlist));
}

const QString origin = QStringLiteral("https://lumomediaplayer.app");

// What a JSON parser reads back from a script literal.
QString parsedBack(const QString &literal)
{
    QJsonParseError error;
    const QJsonDocument document
        = QJsonDocument::fromJson(QByteArray("[") + literal.toUtf8() + ']', &error);
    if (error.error != QJsonParseError::NoError)
        return QStringLiteral("<invalid JSON: %1>").arg(error.errorString());
    return document.array().first().toString();
}
} // namespace

class TestYouTubePage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theVideoPageMatchesTheReviewedDocumentByteForByte()
    {
        QFile expected(QStringLiteral(LUMO_SOURCE_DIR "/tests/webplayer/fixtures/video-page.html"));
        QVERIFY(expected.open(QIODevice::ReadOnly));
        const QByteArray page
            = YouTubePage::html(content(u"dQw4w9WgXcQ"_s, std::nullopt), origin).toUtf8();
        QCOMPARE(page, expected.readAll());
    }

    void theHeadSetsTheReferrerPolicyViewportAndBlackFullSizeStyle()
    {
        const QString page = YouTubePage::html(content(u"abc"_s, std::nullopt), origin);
        QVERIFY(page.startsWith(u"<!doctype html>\n"));
        QVERIFY(
            page.contains(u"<meta name=\"referrer\" content=\"strict-origin-when-cross-origin\">"));
        QVERIFY(page.contains(
            u"<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">"));
        QVERIFY(page.contains(u"html, body, #player { margin: 0; width: 100%; height: 100%; "
                              u"overflow: hidden; background: #000; }"));
        QVERIFY(page.contains(u"iframe { width: 100%; height: 100%; border: 0; }"));
        QVERIFY(page.indexOf(u"</head>") < page.indexOf(u"<body>"));
    }

    void theBodyHoldsThePlayerElementThenTheServiceScriptThenThePageScript()
    {
        const QString page = YouTubePage::html(content(u"abc"_s, std::nullopt), origin);
        const qsizetype element = page.indexOf(u"<div id=\"player\"></div>");
        const qsizetype api
            = page.indexOf(u"<script src=\"https://www.youtube.com/iframe_api\"></script>");
        const qsizetype script = page.indexOf(u"<script>\n    var player;\n");
        QVERIFY(element > page.indexOf(u"<body>"));
        QVERIFY(api > element);
        QVERIFY(script > api);
        QVERIFY(page.endsWith(u"</script>\n</body>\n</html>\n"));
    }

    void thePlayerIsMadeWithItsVariablesAndOptions()
    {
        const QString page = YouTubePage::html(content(u"abc"_s, std::nullopt), origin);
        QVERIFY(page.contains(u"function onYouTubeIframeAPIReady() {"));
        QVERIFY(page.contains(u"autoplay: 1,\n        controls: 1,\n        playsinline: 1,\n"
                              u"        rel: 0,\n        enablejsapi: 1,\n"
                              u"        origin: \"https:\\/\\/lumomediaplayer.app\"\n"));
        QVERIFY(page.contains(u"var videoID = \"abc\";\n      var playlistID = null;\n"));
        QVERIFY(page.contains(u"if (playlistID) {\n        vars.listType = 'playlist';\n"
                              u"        vars.list = playlistID;\n      }"));
        QVERIFY(
            page.contains(u"width: '100%',\n        height: '100%',\n        playerVars: vars,"));
        QVERIFY(page.contains(u"onReady: function (e) { e.target.playVideo(); }"));
        QVERIFY(page.contains(u"if (videoID) {\n        options.videoId = videoID;\n      }"));
        QVERIFY(page.contains(u"player = new YT.Player('player', options);"));
    }

    void theFourCommandFunctionsAreDefined()
    {
        const QString page = YouTubePage::html(content(u"abc"_s, std::nullopt), origin);
        QVERIFY(page.contains(u"if (player.getPlayerState() === YT.PlayerState.PLAYING) {\n"
                              u"        player.pauseVideo();\n      } else {\n"
                              u"        player.playVideo();"));
        QVERIFY(page.contains(u"function lumoSkip(seconds) {\n"
                              u"      if (!player || !player.getCurrentTime) { return; }\n"
                              u"      player.seekTo(Math.max(0, player.getCurrentTime() + "
                              u"seconds), true);"));
        QVERIFY(page.contains(u"function lumoSetVolume(value) {\n      if (!player) { return; }\n"
                              u"      player.unMute();\n"
                              u"      player.setVolume(Math.round(value * 100));"));
        QVERIFY(page.contains(u"function lumoSetMuted(muted) {\n      if (!player) { return; }\n"
                              u"      if (muted) { player.mute(); } else { player.unMute(); }"));
        QVERIFY(page.contains(u"function lumoToggle() {\n"
                              u"      if (!player || !player.getPlayerState) { return; }"));
    }

    void aPlaylistOnlyPageHasNoVideo()
    {
        const QString page = YouTubePage::html(content(std::nullopt, u"PLx"_s), origin);
        QVERIFY(page.contains(u"var videoID = null;\n      var playlistID = \"PLx\";\n"));
    }

    void bothIdentifiersGoIntoThePage()
    {
        const QString page = YouTubePage::html(content(u"v1"_s, u"PL2"_s), origin);
        QVERIFY(page.contains(u"var videoID = \"v1\";\n      var playlistID = \"PL2\";\n"));
    }

    void identifiersAreEscapedAsJsonStrings_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("literal");
        QTest::newRow("quote") << u"a\"b"_s << u"\"a\\\"b\""_s;
        QTest::newRow("single quote") << u"a'b"_s << u"\"a'b\""_s;
        QTest::newRow("backslash") << u"a\\b"_s << u"\"a\\\\b\""_s;
        QTest::newRow("end of script")
            << u"</script><b>"_s << u"\"\\u003C\\/script\\u003E\\u003Cb\\u003E\""_s;
        QTest::newRow("comment opener") << u"<!--x"_s << u"\"\\u003C!--x\""_s;
        QTest::newRow("ampersand") << u"a&b"_s << u"\"a\\u0026b\""_s;
        QTest::newRow("line separators")
            << QString::fromUtf16(u"a\u2028b\u2029c") << u"\"a\\u2028b\\u2029c\""_s;
        QTest::newRow("controls") << QString::fromUtf16(u"\n\r\t\b\f\x01\x1f")
                                  << u"\"\\n\\r\\t\\b\\f\\u0001\\u001F\""_s;
        QTest::newRow("non-ASCII") << QString::fromUtf16(u"caf\u00e9 \u6f22 \U0001F600")
                                   << QString::fromUtf16(u"\"caf\u00e9 \u6f22 \U0001F600\"");
    }
    void identifiersAreEscapedAsJsonStrings()
    {
        QFETCH(QString, identifier);
        QFETCH(QString, literal);
        QCOMPARE(YouTubePage::javascriptString(identifier), literal);
        QCOMPARE(parsedBack(literal), identifier);
        const QString page = YouTubePage::html(content(identifier, identifier), origin);
        QVERIFY(page.contains(u"var videoID = "_s + literal + u";\n      var playlistID = "_s
                              + literal + u";\n"_s));
        // Nothing in an identifier can end the script element early.
        QCOMPARE(page.count(u"</script>"), 2);
    }

    void anAbsentIdentifierOrBrokenTextIsNull()
    {
        QCOMPARE(YouTubePage::javascriptString(std::nullopt), u"null");
        QCOMPARE(YouTubePage::javascriptString(QString(QChar(0xD800))), u"null");
        QCOMPARE(YouTubePage::javascriptString(u"a"_s + QChar(0xDC00)), u"null");
        QCOMPARE(YouTubePage::javascriptString(QString()), u"\"\"");
    }

    void theOriginMustBeAnHttpsOrigin_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("origin");
        QTest::newRow("plain") << u"https://example.org"_s << u"https://example.org"_s;
        QTest::newRow("trailing slash") << u"https://example.org/"_s << u"https://example.org"_s;
        QTest::newRow("upper case") << u"HTTPS://Example.ORG/"_s << u"https://example.org"_s;
        QTest::newRow("port") << u"https://example.org:8443"_s << u"https://example.org:8443"_s;
        QTest::newRow("default port") << u"https://example.org:443/"_s << u"https://example.org"_s;
        QTest::newRow("http") << u"http://example.org"_s << QString();
        QTest::newRow("path") << u"https://example.org/player"_s << QString();
        QTest::newRow("query") << u"https://example.org/?a=1"_s << QString();
        QTest::newRow("fragment") << u"https://example.org/#x"_s << QString();
        QTest::newRow("user") << u"https://me@example.org"_s << QString();
        QTest::newRow("no host") << u"https:///"_s << QString();
        QTest::newRow("words") << u"not an origin"_s << QString();
        QTest::newRow("empty") << QString() << QString();
    }
    void theOriginMustBeAnHttpsOrigin()
    {
        QFETCH(QString, text);
        QFETCH(QString, origin);
        QCOMPARE(YouTubePage::httpsOrigin(text).value_or(QString()), origin);
    }

    void theEnvironmentMayNameAnotherOrigin()
    {
        qunsetenv(YouTubePage::webOriginVariable);
        QCOMPARE(YouTubePage::webOrigin(), YouTubePage::defaultWebOrigin);
        qputenv(YouTubePage::webOriginVariable, "https://player.example.net/");
        QCOMPARE(YouTubePage::webOrigin(), u"https://player.example.net");
        // An unusable value leaves the default in place rather than an insecure origin.
        qputenv(YouTubePage::webOriginVariable, "http://player.example.net");
        QCOMPARE(YouTubePage::webOrigin(), YouTubePage::defaultWebOrigin);
        qunsetenv(YouTubePage::webOriginVariable);
    }

    void theBaseAddressIsTheOriginWithATrailingSlash()
    {
        QCOMPARE(YouTubePage::baseUrl(origin), QUrl(u"https://lumomediaplayer.app/"_s));
        const QString page
            = YouTubePage::html(content(u"abc"_s, std::nullopt), u"https://player.example.net"_s);
        QVERIFY(page.contains(u"origin: \"https:\\/\\/player.example.net\"\n"));
    }
};

QTEST_APPLESS_MAIN(TestYouTubePage)
#include "tst_youtubepage.moc"
