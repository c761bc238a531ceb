#pragma once
// Every mpv option, property and command name the player uses, in one place.

namespace MpvNames {

// Options set before the handle is initialised.
namespace Option {
inline constexpr const char *videoOutput = "vo";
inline constexpr const char *idle = "idle";
inline constexpr const char *keepOpen = "keep-open";
inline constexpr const char *config = "config";
inline constexpr const char *terminal = "terminal";
inline constexpr const char *inputDefaultBindings = "input-default-bindings";
inline constexpr const char *inputVoKeyboard = "input-vo-keyboard";
inline constexpr const char *osc = "osc";
inline constexpr const char *youtubeDl = "ytdl";
inline constexpr const char *networkTimeout = "network-timeout";
inline constexpr const char *streamLavfOptions = "stream-lavf-o";
inline constexpr const char *demuxerLavfOptions = "demuxer-lavf-o";
inline constexpr const char *cachePause = "cache-pause";
inline constexpr const char *cachePauseWait = "cache-pause-wait";
inline constexpr const char *cacheSeconds = "cache-secs";
inline constexpr const char *demuxerMaxBytes = "demuxer-max-bytes";
inline constexpr const char *demuxerMaxBackBytes = "demuxer-max-back-bytes";
inline constexpr const char *demuxerDonateBuffer = "demuxer-donate-buffer";
inline constexpr const char *audioClientName = "audio-client-name";
inline constexpr const char *title = "title";
inline constexpr const char *hardwareDecoding = "hwdec";
inline constexpr const char *panscan = "panscan";
inline constexpr const char *scale = "scale";
inline constexpr const char *downscale = "dscale";
inline constexpr const char *loadUnsafePlaylists = "load-unsafe-playlists";
inline constexpr const char *videoTimingOffset = "video-timing-offset";
inline constexpr const char *subtitleAutoLoad = "sub-auto";
inline constexpr const char *subtitleCodepage = "sub-codepage";
// Per-file options of a network item.
inline constexpr const char *userAgent = "user-agent";
inline constexpr const char *referrer = "referrer";
} // namespace Option

// Properties observed or set while playing.
namespace Property {
inline constexpr const char *pause = "pause";
inline constexpr const char *timePos = "time-pos";
inline constexpr const char *duration = "duration";
inline constexpr const char *pausedForCache = "paused-for-cache";
inline constexpr const char *cacheBufferingState = "cache-buffering-state";
inline constexpr const char *displayWidth = "video-params/dw";
inline constexpr const char *displayHeight = "video-params/dh";
inline constexpr const char *rotation = "video-params/rotate";
inline constexpr const char *fileFormat = "file-format";
inline constexpr const char *seekable = "seekable";
inline constexpr const char *eofReached = "eof-reached";
inline constexpr const char *volume = "volume";
inline constexpr const char *mute = "mute";
inline constexpr const char *hardwareDecoderInUse = "hwdec-current";
inline constexpr const char *playlist = "playlist";
inline constexpr const char *trackList = "track-list";
inline constexpr const char *audioTrack = "aid";
inline constexpr const char *subtitleTrack = "sid";
inline constexpr const char *subtitleVisibility = "sub-visibility";
inline constexpr const char *subtitleText = "sub-text";
// Tags, looked up whatever their letter case in the file.
inline constexpr const char *tagTitle = "metadata/by-key/title";
inline constexpr const char *tagArtist = "metadata/by-key/artist";
inline constexpr const char *tagAlbum = "metadata/by-key/album";
// Settable only while the load hook runs: what mpv opens for the file it starts.
inline constexpr const char *streamOpenFilename = "stream-open-filename";
} // namespace Property

// Hooks, run by mpv's core, which waits for the answer.
namespace Hook {
inline constexpr const char *load = "on_load";
} // namespace Hook

// Commands, sent with named arguments.
namespace Command {
inline constexpr const char *name = "name";
inline constexpr const char *url = "url";
inline constexpr const char *flags = "flags";
inline constexpr const char *options = "options";
inline constexpr const char *target = "target";
inline constexpr const char *loadFile = "loadfile";
inline constexpr const char *replace = "replace";
inline constexpr const char *stop = "stop";
inline constexpr const char *seek = "seek";
inline constexpr const char *seekAbsoluteExact = "absolute+exact";
inline constexpr const char *subtitleAdd = "sub-add";
inline constexpr const char *select = "select";
} // namespace Command

} // namespace MpvNames
