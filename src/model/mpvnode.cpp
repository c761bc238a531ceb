#include "mpvnode.h"

MpvNode::MpvNode(const QVariant &value)
{
    m_root = make(value);
}

char *MpvNode::keep(QByteArray text)
{
    return m_strings.emplace_back(std::move(text)).data();
}

mpv_node MpvNode::make(const QVariant &value)
{
    mpv_node node {};
    switch (value.typeId()) {
    case QMetaType::QVariantMap:
    case QMetaType::QVariantList: {
        const bool isMap = value.typeId() == QMetaType::QVariantMap;
        std::vector<mpv_node> &values = m_values.emplace_back();
        std::vector<char *> &keys = m_keys.emplace_back();
        if (isMap) {
            const QVariantMap map = value.toMap();
            for (auto it = map.cbegin(); it != map.cend(); ++it) {
                keys.push_back(keep(it.key().toUtf8()));
                values.push_back(make(it.value()));
            }
        } else {
            for (const QVariant &item : value.toList())
                values.push_back(make(item));
        }
        mpv_node_list &list = m_lists.emplace_back();
        list.num = int(values.size());
        list.values = values.data();
        list.keys = isMap ? keys.data() : nullptr;
        node.format = isMap ? MPV_FORMAT_NODE_MAP : MPV_FORMAT_NODE_ARRAY;
        node.u.list = &list;
        break;
    }
    case QMetaType::Bool:
        node.format = MPV_FORMAT_FLAG;
        node.u.flag = value.toBool() ? 1 : 0;
        break;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        node.format = MPV_FORMAT_INT64;
        node.u.int64 = value.toLongLong();
        break;
    case QMetaType::Double:
        node.format = MPV_FORMAT_DOUBLE;
        node.u.double_ = value.toDouble();
        break;
    default:
        node.format = MPV_FORMAT_STRING;
        node.u.string = keep(value.toByteArray());
        break;
    }
    return node;
}
