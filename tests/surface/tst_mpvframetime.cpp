// The target time of mpv's next frame is read in the unit of the libmpv in use.
#include "surface/mpvframetime.h"

#include <QTest>
#include <mpv/client.h>

using namespace std::chrono_literals;

class TestMpvFrameTime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mpvBefore037CountsMicroseconds()
    {
        // mpv 0.35 (Debian 12) is client API 2.0, 0.36 is 2.1.
        QCOMPARE(MpvFrameTime::toDuration(1'500'000, MPV_MAKE_VERSION(2, 0)), 1500ms);
        QCOMPARE(MpvFrameTime::toDuration(1'500'000, MPV_MAKE_VERSION(2, 1)), 1500ms);
    }

    void mpv037AndLaterCountNanoseconds()
    {
        // mpv 0.37 is client API 2.2; 0.40 (Debian 13) is 2.5.
        QCOMPARE(MpvFrameTime::toDuration(1'500'000'000, MPV_MAKE_VERSION(2, 2)), 1500ms);
        QCOMPARE(MpvFrameTime::toDuration(1'500'000'000, MPV_MAKE_VERSION(2, 5)), 1500ms);
        QCOMPARE(MpvFrameTime::toDuration(1'500'000'000, MPV_MAKE_VERSION(3, 0)), 1500ms);
    }

    void theLinkedLibraryIsReadAsItsHeaderSays()
    {
        // The version the program runs with and the one it was built with agree here; a frame
        // 40 ms ahead stays 40 ms ahead.
        const int64_t ahead
            = MPV_CLIENT_API_VERSION >= MPV_MAKE_VERSION(2, 2) ? 40'000'000 : 40'000;
        QCOMPARE(MpvFrameTime::toDuration(ahead, mpv_client_api_version()), 40ms);
    }
};

QTEST_APPLESS_MAIN(TestMpvFrameTime)
#include "tst_mpvframetime.moc"
