#!/bin/sh
# Makes the demo disc's short media files with GStreamer's own encoders (Debian: gstreamer1.0-tools,
# -plugins-good, -plugins-bad, -plugins-ugly). The files are committed under assets/demo-media/; run
# this only to make them again.
#   tools/make-demo-media.sh [FOLDER]   (default: assets/demo-media)
set -eu
out=${1:-$(dirname "$0")/../assets/demo-media}
mkdir -p "$out"
launch() { gst-launch-1.0 -q "$@" >/dev/null; }

# Two seconds of a soft chime, as WAV and as MP3.
launch audiotestsrc num-buffers=44 samplesperbuffer=800 freq=660 volume=0.3 ! audio/x-raw,rate=16000,channels=1 \
    ! wavenc ! filesink location="$out/CHIME.WAV"
launch audiotestsrc num-buffers=40 samplesperbuffer=1152 freq=440 volume=0.2 ! audio/x-raw,rate=22050,channels=1 \
    ! lamemp3enc bitrate=32 ! id3v2mux ! filesink location="$out/THEME.MP3"
# Two seconds of moving bars at 160x120, 10 frames a second, in the three containers a master carries.
bars="videotestsrc num-buffers=20 pattern=smpte ! video/x-raw,width=160,height=120,framerate=10/1"
launch $bars ! jpegenc quality=60 ! avimux ! filesink location="$out/TRAILER.AVI"
launch $bars ! jpegenc quality=60 ! qtmux ! filesink location="$out/CLIP.MOV"
launch videotestsrc num-buffers=50 pattern=ball ! video/x-raw,width=352,height=240,framerate=25/1 \
    ! mpeg2enc format=1 ! mpegpsmux ! filesink location="$out/INTRO.MPG"
ls -l "$out"
