// Commands for mpv are built as node trees from Qt values.
#include "model/mpvnode.h"

#include <QTest>

namespace {

const mpv_node *find(const mpv_node &map, const char *key)
{
    for (int i = 0; i < map.u.list->num; ++i) {
        if (QByteArrayView(map.u.list->keys[i]) == key)
            return &map.u.list->values[i];
    }
    return nullptr;
}

} // namespace

class TestMpvNode : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCommandBecomesAMapOfNamedArguments()
    {
        const QVariantMap options {
            {QStringLiteral("user-agent"), QStringLiteral("Agent, \"quoted\"=1")},
            {QStringLiteral("demuxer-lavf-o"), QByteArray("protocol_whitelist=%9%http,https")},
        };
        MpvNode node(QVariantMap {{QStringLiteral("name"), QByteArray("loadfile")},
                                  {QStringLiteral("url"), QByteArray("http://a.example/x")},
                                  {QStringLiteral("options"), options}});
        const mpv_node &root = *node.get();
        QCOMPARE(root.format, MPV_FORMAT_NODE_MAP);
        QCOMPARE(root.u.list->num, 3);
        QCOMPARE(QByteArrayView(find(root, "name")->u.string), "loadfile");
        QCOMPARE(QByteArrayView(find(root, "url")->u.string), "http://a.example/x");
        const mpv_node *inner = find(root, "options");
        QVERIFY(inner);
        QCOMPARE(inner->format, MPV_FORMAT_NODE_MAP);
        // Values go as they are: no quoting is needed or added.
        QCOMPARE(QByteArrayView(find(*inner, "user-agent")->u.string), "Agent, \"quoted\"=1");
        QCOMPARE(QByteArrayView(find(*inner, "demuxer-lavf-o")->u.string),
                 "protocol_whitelist=%9%http,https");
    }

    void valuesKeepTheirTypes()
    {
        MpvNode node(QVariantList {true, 42, 2.5, QStringLiteral("é"), QVariantList {}});
        const mpv_node &root = *node.get();
        QCOMPARE(root.format, MPV_FORMAT_NODE_ARRAY);
        QCOMPARE(root.u.list->num, 5);
        QVERIFY(!root.u.list->keys);
        const mpv_node *values = root.u.list->values;
        QCOMPARE(values[0].format, MPV_FORMAT_FLAG);
        QCOMPARE(values[0].u.flag, 1);
        QCOMPARE(values[1].format, MPV_FORMAT_INT64);
        QCOMPARE(values[1].u.int64, 42);
        QCOMPARE(values[2].format, MPV_FORMAT_DOUBLE);
        QCOMPARE(values[2].u.double_, 2.5);
        QCOMPARE(values[3].format, MPV_FORMAT_STRING);
        QCOMPARE(QByteArrayView(values[3].u.string), "\xc3\xa9");
        QCOMPARE(values[4].format, MPV_FORMAT_NODE_ARRAY);
        QCOMPARE(values[4].u.list->num, 0);
    }
};

QTEST_APPLESS_MAIN(TestMpvNode)
#include "tst_mpvnode.moc"
