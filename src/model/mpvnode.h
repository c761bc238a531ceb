#pragma once
// An mpv_node tree made from Qt values, to send commands with named arguments
// (mpv_command_node). The tree points into storage this object owns and lives as long as it.
#include <QVariant>
#include <deque>
#include <mpv/client.h>
#include <vector>

class MpvNode final
{
public:
    // Maps become node maps, lists node arrays, booleans flags, whole numbers int64, other
    // numbers doubles, and everything else (QString as UTF-8, QByteArray as it is) strings.
    explicit MpvNode(const QVariant &value);
    MpvNode(const MpvNode &) = delete;
    MpvNode &operator=(const MpvNode &) = delete;

    mpv_node *get() { return &m_root; }

private:
    mpv_node make(const QVariant &value);
    char *keep(QByteArray text);

    // Deques never move what they already hold, so the pointers into them stay valid.
    std::deque<QByteArray> m_strings;
    std::deque<std::vector<mpv_node>> m_values;
    std::deque<std::vector<char *>> m_keys;
    std::deque<mpv_node_list> m_lists;
    mpv_node m_root {}; // last: made from the storage above
};
