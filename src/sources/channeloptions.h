#pragma once
// What a playlist says about a channel beyond its address: the request headers it plays with
// and how its past programmes are reached. Shared by the entries that have the same.
#include "catchupsettings.h"
#include "streamheaders.h"

#include <optional>

struct ChannelOptions
{
    StreamHeaders headers;
    std::optional<CatchupSettings> catchup; // nothing: the channel has no archive

    bool isEmpty() const { return headers.isEmpty() && !catchup; }
    friend bool operator==(const ChannelOptions &, const ChannelOptions &) = default;
};
