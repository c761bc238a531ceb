#!/usr/bin/env bash
# demo.sh BIN_DIR WORK_DIR: makes sample media with ffmpeg, serves it on a loopback HTTP server
# with a live HLS stream that keeps going, and opens the player on the clip.
set -euo pipefail

BIN="$1"
WORK="$2"
mkdir -p "$WORK/live" "$WORK/logos"

say() { printf 'lumo demo: %s\n' "$*" >&2; }

FFMPEG=(ffmpeg -hide_banner -loglevel error -nostdin -y)

# A 1280x720 clip with a tone, made once.
if [[ ! -s "$WORK/clip.mp4" ]]; then
    say "making a 30 s 1280x720 clip with a tone"
    "${FFMPEG[@]}" -f lavfi -i testsrc2=size=1280x720:rate=30:duration=30 \
        -f lavfi -i "sine=frequency=440:beep_factor=4:duration=30" \
        -c:v libx264 -preset veryfast -pix_fmt yuv420p -c:a aac -b:a 128k -shortest \
        -movflags +faststart "$WORK/clip.mp4"
fi

# Channel logos: plain coloured squares.
for logo in red:news green:sport blue:music orange:kids; do
    colour="${logo%%:*}" name="${logo##*:}"
    [[ -s "$WORK/logos/$name.png" ]] ||
        "${FFMPEG[@]}" -f lavfi -i "color=c=$colour:s=96x96:d=1" -frames:v 1 "$WORK/logos/$name.png"
done

PIDS=()
cleanup() {
    local pid
    for pid in "${PIDS[@]}"; do kill "$pid" 2>/dev/null || true; done
    wait 2>/dev/null || true
}
trap cleanup EXIT INT TERM

# A live HLS stream with a sliding window of six 2 s segments, for as long as the demo runs.
rm -f "$WORK"/live/*
"${FFMPEG[@]}" -re -f lavfi -i testsrc2=size=1280x720:rate=30 \
    -f lavfi -i "sine=frequency=330:beep_factor=2" \
    -c:v libx264 -preset ultrafast -tune zerolatency -g 60 -pix_fmt yuv420p -c:a aac \
    -f hls -hls_time 2 -hls_list_size 6 -hls_flags delete_segments+omit_endlist \
    -hls_segment_filename "$WORK/live/seg%05d.ts" "$WORK/live/index.m3u8" &
PIDS+=($!)

exec {port_fd}< <("$BIN/lumo-serve" "$WORK")
PIDS+=($!)
read -r -t 10 PORT <&"$port_fd" || { say "the HTTP server did not start"; exit 1; }
BASE="http://127.0.0.1:$PORT"

cat >"$WORK/channels.m3u" <<M3U
#EXTM3U
#EXTINF:-1 tvg-id="lumo.news.us" tvg-logo="$BASE/logos/news.png" group-title="News",Lumo News (live)
$BASE/live/index.m3u8
#EXTINF:-1 tvg-id="lumo.sport.de" tvg-logo="$BASE/logos/sport.png" group-title="Sport",Lumo Sport
$BASE/clip.mp4
#EXTINF:-1 tvg-country="FR" tvg-logo="$BASE/logos/music.png" group-title="Music",Lumo Musique
live/index.m3u8
#EXTINF:-1 tvg-country="GB" tvg-logo="$BASE/logos/kids.png" group-title="Kids",Lumo Kids
$BASE/clip.mp4
M3U

for i in $(seq 1 50); do
    [[ -s "$WORK/live/index.m3u8" ]] && break
    sleep 0.2
done

say "serving $WORK on $BASE"
say "  clip:     $BASE/clip.mp4"
say "  live:     $BASE/live/index.m3u8"
say "  playlist: $BASE/channels.m3u"
say "opening the player on the playlist; close its window to end the demo"
"$BIN/LumoMediaPlayer" "$BASE/channels.m3u"
