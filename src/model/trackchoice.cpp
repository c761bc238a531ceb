#include "trackchoice.h"

#include <algorithm>

namespace TrackChoice {

MediaTracks ofKind(const MediaTracks &tracks, TrackKind kind)
{
    MediaTracks result;
    std::copy_if(tracks.cbegin(), tracks.cend(), std::back_inserter(result),
                 [kind](const MediaTrack &track) { return track.kind == kind; });
    return result;
}

std::optional<qint64> initial(const MediaTracks &tracks, TrackKind kind,
                              QLocale::Language systemLanguage)
{
    const MediaTracks candidates = ofKind(tracks, kind);
    if (candidates.isEmpty())
        return std::nullopt;
    // Forced before default: a forced track is the one the file insists on.
    for (const auto flagged : {&MediaTrack::isForced, &MediaTrack::isDefault}) {
        for (const MediaTrack &track : candidates)
            if (track.*flagged)
                return track.id;
    }
    for (const MediaTrack &track : candidates) {
        if (!track.language.isEmpty()
            && QLocale::codeToLanguage(track.language.trimmed().toLower()) == systemLanguage)
            return track.id;
    }
    return candidates.constFirst().id;
}

std::optional<qint64> next(const MediaTracks &tracks, TrackKind kind)
{
    const MediaTracks candidates = ofKind(tracks, kind);
    if (candidates.isEmpty())
        return std::nullopt;
    const auto current = std::find_if(candidates.cbegin(), candidates.cend(),
                                      [](const MediaTrack &track) { return track.isSelected; });
    if (current == candidates.cend())
        return candidates.constFirst().id;
    if (current + 1 != candidates.cend())
        return (current + 1)->id;
    if (kind == TrackKind::subtitle)
        return std::nullopt;
    return candidates.constFirst().id;
}

std::optional<MediaTrack> selected(const MediaTracks &tracks, TrackKind kind)
{
    for (const MediaTrack &track : tracks)
        if (track.kind == kind && track.isSelected)
            return track;
    return std::nullopt;
}

} // namespace TrackChoice
