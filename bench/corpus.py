"""The files that compare.py measures, made with the ffmpeg tool and ImageMagick below build/bench-corpus.

A few seconds of each codec are encoded once ("material") and repeated by stream copy, because lengths, indexes and
tracks matter here, not what the pictures show. What exists is kept; delete the folder to make all files again.
"""
import base64
import concurrent.futures
import os
import pathlib
import struct
import subprocess

CORPUS = pathlib.Path(__file__).resolve().parent.parent / "build/bench-corpus"

SONGS = {"mp3", "flac", "m4a", "m4b", "ogg", "opus", "wav", "wma", "aac", "aiff", "aif", "wv", "mka"}
PHOTOS = {"jpg", "png", "gif", "bmp", "tif", "webp"}


def source(size, rate, seconds, noise="6:allf=t"):
    """A moving picture; noise that changes from frame to frame makes it as hard to encode as a camera's."""
    return f"-f lavfi -i testsrc2=size={size}:rate={rate}:duration={seconds},noise=alls={noise} -pix_fmt yuv420p "


def film(size, rate=24, seconds=8, noise=5):
    """A calm scene: key frames of a usual size, but files of two hours stay small."""
    return (f"-f lavfi -i smptehdbars=size={size}:rate={rate}:duration={seconds},noise=alls={noise},"
            "drawbox=x=40+20*t:y=h/2:w=80:h=80:color=red:t=fill -pix_fmt yuv420p ")


def still(size, noise=10):
    return f"-f lavfi -i testsrc2=size={size}:rate=1,noise=alls={noise} -frames:v 1 "


X264 = "-c:v libx264 -preset veryfast -bf 2 "
X265 = "-c:v libx265 -preset ultrafast -x265-params log-level=error -tag:v hvc1 "
TV = "-flags +ilme+ildct -g 12 -bf 2 "
NOISE = "-stream_loop -1 -i material/music.wav -t 30 "
AROUND = NOISE + "-ac 6 -ar 48000 "

# What others are made of comes first.
SOURCES = {
    "music.wav": "-f lavfi -i anoisesrc=color=pink:amplitude=0.2:duration=30:sample_rate=44100 "
                 "-f lavfi -i sine=frequency=440:duration=30 -filter_complex amix -ac 2",
    "cover-600.jpg": still("600x600") + "-pix_fmt yuvj420p -q:v 3",
    "cover-1000.jpg": still("1000x1000") + "-pix_fmt yuvj420p -q:v 2",
    "cover-1400.jpg": still("1400x1400") + "-pix_fmt yuvj420p -q:v 2",
    "cover-3000.jpg": still("3000x3000") + "-pix_fmt yuvj420p -q:v 3",
    "cover-1000.png": still("1000x1000", 4) + "-pix_fmt rgb24",
    "cover-1500.png": still("1500x1500", 2) + "-pix_fmt rgb24",
    "cover-3000.png": still("3000x3000", 1) + "-pix_fmt rgb24",
}
MATERIAL = {
    "phone-h264-720p.mkv": source("1280x720", 30, 2) + X264 + "-b:v 8M -maxrate 8M -bufsize 4M",
    "phone-h264-1080p.mkv": source("1920x1080", 30, 2) + X264 + "-b:v 16M -maxrate 16M -bufsize 8M",
    "phone-h264-2160p.mkv": source("3840x2160", 30, 1) + X264 + "-b:v 40M -maxrate 40M -bufsize 20M",
    "phone-hevc-1080p.mkv": source("1920x1080", 30, 2) + X265 + "-b:v 9M",
    "phone-hevc-2160p.mkv": source("3840x2160", 30, 1) + X265 + "-b:v 28M",
    "phone-mpeg4.mkv": source("640x480", 15, 2) + "-c:v mpeg4 -b:v 1M",
    "film-h264-480p.mkv": film("720x480") + X264 + "-crf 23",
    "film-h264-720p.mkv": film("1280x720") + X264 + "-crf 24",
    "film-h264-1080p.mkv": film("1920x1080") + X264 + "-crf 27",
    "film-hevc-720p.mkv": film("1280x720", noise=8) + X265 + "-crf 24",
    "film-hevc-1080p.mkv": film("1920x1080", noise=8) + "-vf format=yuv420p10le " + X265 + "-crf 26",
    "film-hevc-2160p.mkv": film("3840x2160", 24, 5, 8) + "-vf format=yuv420p10le " + X265 + "-crf 30",
    "film-mpeg4.mkv": film("720x400", 25) + "-c:v mpeg4 -vtag XVID -q:v 4 -g 100",
    "film-divx3.avi": film("640x352", 25) + "-c:v msmpeg4 -q:v 4 -g 100",
    "film-mpeg2.mkv": film("720x576", 25) + "-c:v mpeg2video -q:v 6 -g 100 -bf 2",
    "film-vp9.mkv": film("1920x1080") + "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -crf 40 -b:v 0",
    "film-vp8.mkv": film("854x480") + "-c:v libvpx -deadline realtime -cpu-used 8 -b:v 150k",
    "film-flv1.flv": film("640x360", 25) + "-c:v flv1 -q:v 5 -g 100",
    "film-wmv2.mkv": film("720x400", 25) + "-c:v wmv2 -q:v 5 -g 100",
    "film-mjpeg.mkv": film("640x480", 15, 2) + "-pix_fmt yuvj420p -c:v mjpeg -q:v 8",
    "tv-h264-1080i.mkv": source("1920x1080", 25, 2) + X264 + "-flags +ilme+ildct -g 25 -b:v 6M -maxrate 8M -bufsize 4M",
    "tv-h264-720p.mkv": source("1280x720", 50, 2) + X264 + "-g 50 -b:v 5M -maxrate 6M -bufsize 3M",
    "tv-hevc-1080p.mkv": source("1920x1080", 50, 1) + X265 + "-b:v 5M",
    "tv-hevc-2160p.mkv": source("3840x2160", 50, 1) + X265 + "-b:v 16M",
    "tv-mpeg2-576i.mkv": source("720x576", 25, 2) + "-c:v mpeg2video -b:v 4M " + TV,
    "tv-mpeg2-1080i.mkv": source("1920x1080", 25, 2) + "-c:v mpeg2video -b:v 12M " + TV,
    "aac.mka": NOISE + "-c:a aac -b:a 96k",
    "aac-51.mka": AROUND + "-c:a aac -b:a 256k",
    "ac3.mka": NOISE + "-ar 48000 -c:a ac3 -b:a 192k",
    "eac3.mka": AROUND + "-c:a eac3 -b:a 256k",
    "dts.mka": NOISE + "-ar 48000 -c:a dca -strict -2 -b:a 384k",
    "mp2.mka": NOISE + "-c:a mp2 -b:a 192k",
    "mp3.mka": NOISE + "-c:a libmp3lame -b:a 96k",
    "opus.mka": NOISE + "-ar 48000 -c:a libopus -b:a 96k",
    "vorbis.mka": NOISE + "-c:a libvorbis -q:a 3",
    "wmav2.mka": NOISE + "-c:a wmav2 -b:a 96k",
    "aac.m4a": NOISE + "-c:a aac -ac 1 -b:a 48k",
}


def looped(seconds, tracks, options=""):
    """SECONDS of the tracks, which are names of material, repeated by stream copy."""
    names = tracks.split()
    inputs = "".join(f"-i {name} " if name.endswith(".srt") or name == "chapters.txt" else
                     f"-stream_loop -1 -i material/{name} " for name in names)
    maps = "".join(f"-map {i} " for i, name in enumerate(names) if name != "chapters.txt")
    return f"{inputs}{maps}-c copy {options} -t {seconds}"


def phone(seconds, video, rotate=0, options=""):
    turned = f"-metadata:s:v rotate={rotate}" if rotate else ""
    return looped(seconds, f"{video} aac.mka", f"{turned} -metadata creation_time=2023-06-07T08:09:10Z "
                                               f"-metadata location=+53.5436+009.9882/ {options}")


TAGS = ("-metadata title=Harbour -metadata artist=Oscillators -metadata album=Tones -metadata genre=Electronic "
        "-metadata track=3/12 -metadata date=2015 -metadata composer=Nobody -metadata comment=made_for_measuring ")


def song(seconds, options):
    return f"-stream_loop -1 -i material/music.wav -t {seconds} {TAGS}{options}"


def covered(picture, seconds, options):
    """A song with an attached picture."""
    return (f"-stream_loop -1 -i material/music.wav -i material/{picture} -map 0 -map 1 -c:v copy -t {seconds} "
            f"-disposition:v attached_pic -metadata:s:v title=Cover {TAGS}{options}")


def covered_ogg(picture, size, seconds, options):
    """Ogg holds pictures as a comment: a FLAC picture block in Base64."""
    def make(path):
        data = (CORPUS / "material" / picture).read_bytes()
        block = struct.pack(">II10sI5I", 3, 10, b"image/jpeg", 0, size, size, 24, 0, len(data)) + data
        text = base64.b64encode(block).decode().replace("=", "\\=")
        comments = f"material/{path.name}.txt"
        (CORPUS / comments).write_text(
            f";FFMETADATA1\nMETADATA_BLOCK_PICTURE={text}\ntitle=Harbour\nartist=Oscillators\n")
        run_ffmpeg(f"-stream_loop -1 -i material/music.wav -i {comments} -map_metadata 1 -t {seconds} {options}", path)
    return make


def exif(orientation):
    """What cameras write in front of a picture: orientation, times, a position, and 24 KiB of the maker's notes."""
    def directory(at, entries):
        """An image file directory that begins at AT: values of more than four bytes follow it."""
        rows, tail = b"", b""
        for tag, kind, count, value in sorted(entries):
            if len(value) > 4:
                value, tail = struct.pack("<I", at + 6 + 12 * len(entries) + len(tail)), tail + value
            rows += struct.pack("<HHI4s", tag, kind, count, value)
        return struct.pack("<H", len(entries)) + rows + bytes(4) + tail
    stamp = b"2023:06:07 08:09:10\0"
    degrees = struct.pack("<6I", 53, 1, 32, 1, 37, 1)
    first = lambda exif_at, gps_at: directory(8, [
        (0x112, 3, 1, struct.pack("<HH", orientation, 0)), (0x132, 2, 20, stamp),
        (0x8769, 4, 1, struct.pack("<I", exif_at)), (0x8825, 4, 1, struct.pack("<I", gps_at))])
    exif_at = 8 + len(first(0, 0))
    second = directory(exif_at, [
        (0x829A, 5, 1, struct.pack("<II", 1, 125)), (0x829D, 5, 1, struct.pack("<II", 18, 10)),
        (0x8827, 3, 1, struct.pack("<HH", 100, 0)), (0x9003, 2, 20, stamp),
        (0x927C, 7, 24576, bytes(range(256)) * 96)])
    gps_at = exif_at + len(second)
    third = directory(gps_at, [(1, 2, 2, b"N\0\0\0"), (2, 5, 3, degrees), (3, 2, 2, b"E\0\0\0"), (4, 5, 3, degrees)])
    body = b"Exif\0\0II*\0" + struct.pack("<I", 8) + first(exif_at, gps_at) + second + third
    return b"\xff\xe1" + struct.pack(">H", len(body) + 2) + body


def camera(size, orientation=1, options="-pix_fmt yuvj420p -q:v 3", progressive=False):
    """A JPEG photo with what a camera writes in front of it."""
    def make(path):
        run_ffmpeg(still(size) + options, path)
        if progressive:
            run("convert", path, "-interlace", "JPEG", path)
        data = path.read_bytes()
        path.write_bytes(data[:2] + exif(orientation) + data[2:])
    return make


def converted(options):
    """A picture that only ImageMagick writes."""
    return lambda path: run("convert", *options.split(), path)


ATTACHED = "".join(f"-attach material/cover-{size}.jpg -metadata:s:t:{i} mimetype=image/jpeg "
                   for i, size in enumerate((600, 1000)))
M2TS = "-f mpegts -mpegts_m2ts_mode 1"
HOUR = 3600

# {group: {name: how it is made}}; strings are arguments of ffmpeg.
FILES = {
    "phone videos": {
        "h264-1080p.mp4": phone(12, "phone-h264-1080p.mkv"),
        "h264-1080p-portrait.mp4": phone(8, "phone-h264-1080p.mkv", 90),
        "h264-1080p-fast-start.mp4": phone(9, "phone-h264-1080p.mkv", 90, "-movflags +faststart"),
        "h264-1080p.mov": phone(10, "phone-h264-1080p.mkv", 90),
        "h264-720p.mov": phone(15, "phone-h264-720p.mkv"),
        "h264-720p-fragmented.mp4": phone(20, "phone-h264-720p.mkv", 0, "-movflags +frag_keyframe+empty_moov"),
        "h264-2160p.mp4": phone(6, "phone-h264-2160p.mkv"),
        "hevc-1080p.mov": phone(14, "phone-hevc-1080p.mkv", 90, "-tag:v hvc1"),
        "hevc-1080p.mp4": phone(20, "phone-hevc-1080p.mkv", 0, "-tag:v hvc1"),
        "hevc-2160p.mov": phone(5, "phone-hevc-2160p.mkv", 90, "-tag:v hvc1"),
        "hevc-2160p.mp4": phone(6, "phone-hevc-2160p.mkv", 0, "-tag:v hvc1"),
        "old.3gp": phone(20, "phone-mpeg4.mkv"),
    },
    "films": {
        "h264-1080p.mkv": looped(10 * 60, "film-h264-1080p.mkv ac3.mka aac.mka talk.srt talk.srt"),
        "h264-1080p-dts.mkv": looped(10 * 60, "film-h264-1080p.mkv dts.mka talk.srt"),
        "h264-720p-many-tracks.mkv": looped(
            11 * 60, "film-h264-720p.mkv aac.mka ac3.mka mp3.mka mp3.mka talk.srt talk.srt talk.srt talk.srt talk.srt "
                     "chapters.txt", ATTACHED),
        "hevc-1080p.mkv": looped(10 * 60, "film-hevc-1080p.mkv eac3.mka aac.mka talk.srt talk.srt"),
        "hevc-1080p-30min.mkv": looped(30 * 60, "film-hevc-1080p.mkv aac.m4a talk.srt"),
        "hevc-720p.mkv": looped(10 * 60, "film-hevc-720p.mkv aac.mka talk.srt talk.srt"),
        "hevc-2160p.mkv": looped(10 * 60, "film-hevc-2160p.mkv eac3.mka aac.mka talk.srt chapters.txt"),
        "vp9-1080p.webm": looped(10 * 60, "film-vp9.mkv opus.mka"),
        "vp8.webm": looped(10 * 60, "film-vp8.mkv vorbis.mka"),
        "mpeg4.mkv": looped(15 * 60, "film-mpeg4.mkv mp3.mka talk.srt"),
        "mpeg2.mkv": looped(10 * 60, "film-mpeg2.mkv ac3.mka"),
        "h264-1080p.mp4": looped(10 * 60, "film-h264-1080p.mkv aac.mka"),
        "h264-480p-2h-fast-start.mp4": looped(2 * HOUR, "film-h264-480p.mkv aac.m4a", "-movflags +faststart"),
        "h264-720p-tracks.mp4": looped(10 * 60, "film-h264-720p.mkv aac.mka ac3.mka talk.srt talk.srt",
                                       "-c:s mov_text"),
        "h264-480p.m4v": looped(10 * 60, "film-h264-480p.mkv aac.mka chapters.txt", "-movflags +faststart"),
        "hevc-1080p.mp4": looped(10 * 60, "film-hevc-1080p.mkv aac-51.mka", "-tag:v hvc1"),
        "mpeg4.mp4": looped(11 * 60, "film-mpeg4.mkv aac.mka", "-tag:v mp4v"),
        "mjpeg.mov": looped(120, "film-mjpeg.mkv mp2.mka"),
        "xvid.avi": looped(30 * 60, "film-mpeg4.mkv mp3.mka"),
        "divx3.avi": looped(20 * 60, "film-divx3.avi mp3.mka"),
        "h264.flv": looped(12 * 60, "film-h264-480p.mkv aac.mka"),
        "flv1.flv": looped(10 * 60, "film-flv1.flv mp3.mka"),
        "wmv2.wmv": looped(12 * 60, "film-wmv2.mkv wmav2.mka"),
        "mpeg2.mpg": looped(10 * 60, "film-mpeg2.mkv mp2.mka"),
        "mpeg2-dvd.vob": looped(11 * 60, "film-mpeg2.mkv ac3.mka", "-f vob"),
    },
    "transport streams": {
        "h264-1080i.ts": looped(25, "tv-h264-1080i.mkv ac3.mka mp2.mka"),
        "h264-720p.ts": looped(20, "tv-h264-720p.mkv aac.mka"),
        "h264-phone.ts": looped(8, "phone-h264-1080p.mkv aac.mka"),
        "h264-1080i.m2ts": looped(20, "tv-h264-1080i.mkv ac3.mka", M2TS),
        "h264-disc.m2ts": looped(8, "phone-h264-1080p.mkv dts.mka ac3.mka", M2TS),
        "h264-camcorder.mts": looped(12, "tv-h264-1080i.mkv ac3.mka", M2TS),
        "hevc-1080p.ts": looped(30, "tv-hevc-1080p.mkv eac3.mka aac.mka"),
        "hevc-2160p.ts": looped(8, "tv-hevc-2160p.mkv eac3.mka"),
        "hevc-2160p.m2ts": looped(8, "tv-hevc-2160p.mkv ac3.mka", M2TS),
        "mpeg2-576i.ts": looped(25, "tv-mpeg2-576i.mkv mp2.mka ac3.mka"),
        "mpeg2-1080i.ts": looped(20, "tv-mpeg2-1080i.mkv ac3.mka"),
        "mpeg2-1080i.m2ts": looped(12, "tv-mpeg2-1080i.mkv ac3.mka", M2TS),
    },
    "songs": {
        "320k.mp3": song(215, "-b:a 320k -id3v2_version 3"),
        "vbr.mp3": song(241, "-q:a 2"),
        "128k.mp3": song(187, "-b:a 128k -write_id3v1 1"),
        "no-xing.mp3": song(200, "-b:a 192k -write_xing 0"),
        "id3v1.mp3": song(190, "-b:a 160k -id3v2_version 0 -write_id3v1 1"),
        "speech.mp3": song(300, "-ac 1 -ar 22050 -b:a 48k"),
        "16-bit.flac": song(205, "-sample_fmt s16"),
        "24-bit.flac": song(180, "-ar 48000 -sample_fmt s32"),
        "aac-256k.m4a": song(232, "-c:a aac -b:a 256k"),
        "aac-128k.m4a": song(211, "-c:a aac -b:a 128k -movflags +faststart"),
        "alac.m4a": song(184, "-c:a alac"),
        "book.m4b": looped(2 * HOUR, "aac.m4a chapters.txt", "-f mp4 " + TAGS),
        "vorbis.ogg": song(226, "-c:a libvorbis -q:a 5"),
        "vorbis-high.ogg": song(192, "-c:a libvorbis -q:a 8"),
        "opus.opus": song(243, "-ar 48000 -c:a libopus -b:a 128k"),
        "16-bit.wav": song(198, "-c:a pcm_s16le"),
        "24-bit.wav": song(180, "-ac 1 -ar 48000 -c:a pcm_s24le"),
        "wma2.wma": song(220, "-c:a wmav2 -b:a 160k"),
        "adts.aac": song(208, "-c:a aac -b:a 160k"),
        "16-bit.aiff": song(190, "-write_id3v2 1"),
        "wavpack.wv": song(195, "-c:a wavpack"),
    },
    "songs with covers": {
        "jpeg-600.mp3": covered("cover-600.jpg", 205, "-b:a 192k -id3v2_version 3"),
        "jpeg-1000.mp3": covered("cover-1000.jpg", 221, "-b:a 320k -id3v2_version 3"),
        "jpeg-1400.mp3": covered("cover-1400.jpg", 183, "-q:a 2"),
        "jpeg-3000.mp3": covered("cover-3000.jpg", 194, "-b:a 256k"),
        "png-1000.mp3": covered("cover-1000.png", 232, "-b:a 192k -id3v2_version 3"),
        "jpeg-1000.flac": covered("cover-1000.jpg", 190, "-sample_fmt s16"),
        "png-1500.flac": covered("cover-1500.png", 180, "-sample_fmt s16"),
        "png-3000.flac": covered("cover-3000.png", 181, "-sample_fmt s16"),
        "jpeg-600.m4a": covered("cover-600.jpg", 216, "-c:a aac -b:a 256k"),
        "jpeg-1400.m4a": covered("cover-1400.jpg", 203, "-c:a aac -b:a 256k"),
        "png-1000.m4a": covered("cover-1000.png", 196, "-c:a aac -b:a 128k -movflags +faststart"),
        "jpeg-1000.aiff": covered("cover-1000.jpg", 180, "-write_id3v2 1"),
        "jpeg-600.ogg": covered_ogg("cover-600.jpg", 600, 205, "-c:a libvorbis -q:a 5"),
        "jpeg-1000.opus": covered_ogg("cover-1000.jpg", 1000, 214, "-ar 48000 -c:a libopus"),
    },
    "photos": {
        "camera-12mp.jpg": camera("4000x3000"),
        "camera-12mp-portrait.jpg": camera("4000x3000", 6),
        "camera-12mp-wide.jpg": camera("4608x2592", 3),
        "camera-12mp-progressive.jpg": camera("4000x3000", 1, progressive=True),
        "camera-16mp.jpg": camera("4608x3456", 8),
        "camera-24mp-422.jpg": camera("6000x4000", 1, "-pix_fmt yuvj422p -q:v 3"),
        "camera-48mp.jpg": camera("8000x6000", 6, "-pix_fmt yuvj420p -q:v 5"),
        "web-2mp.jpg": still("1920x1080") + "-pix_fmt yuvj420p -q:v 4",
        "web-444.jpg": still("1280x960") + "-pix_fmt yuvj444p -q:v 4",
        "web-800.jpg": still("800x600") + "-pix_fmt yuvj420p -q:v 5",
        "scan-grey.jpg": converted("material/cover-3000.jpg -colorspace Gray"),
        "screen-phone.png": still("1170x2532", 0) + "-pix_fmt rgba",
        "screen-2mp.png": still("1920x1080", 0) + "-pix_fmt rgb24",
        "12mp.png": still("4000x3000", 2) + "-pix_fmt rgb24",
        "16-bit.png": still("1600x1200", 2) + "-pix_fmt rgb48be",
        "palette.png": converted("material/cover-1000.jpg -colors 200 -type Palette"),
        "interlaced.png": converted("material/cover-1400.jpg -interlace PNG"),
        "moving.gif": "-f lavfi -i testsrc2=size=480x270:rate=10:duration=3",
        "still.gif": converted("material/cover-600.jpg"),
        "24-bit.bmp": still("1920x1080") + "-pix_fmt bgr24",
        "12mp-plain.tif": still("4000x3000") + "-pix_fmt rgb24 -compression_algo raw",
        "6mp-lzw.tif": still("3000x2000", 2) + "-pix_fmt rgb24 -compression_algo lzw",
        "lossy.webp": still("1600x1200") + "-c:v libwebp -quality 80",
        "lossless.webp": still("1024x768", 2) + "-c:v libwebp -lossless 1",
    },
    "small files": {
        "h264.mp4": looped(2, "film-h264-480p.mkv aac.mka"),
        "h264.mov": looped(1, "film-h264-480p.mkv aac.mka"),
        "h264.mkv": looped(2, "film-h264-480p.mkv aac.mka"),
        "h264.ts": looped(2, "film-h264-480p.mkv aac.mka"),
        "hevc.mp4": looped(1, "film-hevc-720p.mkv aac.mka", "-tag:v hvc1"),
        "mpeg4.avi": looped(2, "film-mpeg4.mkv mp3.mka"),
        "wmv2.wmv": looped(2, "film-wmv2.mkv wmav2.mka"),
        "vp8.webm": looped(1, "film-vp8.mkv vorbis.mka"),
        "ring.mp3": song(3, "-b:a 128k"),
        "ring.ogg": song(2, "-c:a libvorbis"),
        "ring.m4a": song(2, "-c:a aac"),
        "ring.wav": song(1, ""),
        "voice.opus": song(4, "-ac 1 -ar 48000 -c:a libopus -b:a 24k"),
        "icon.png": still("64x64") + "-pix_fmt rgba",
        "icon.gif": still("32x32"),
        "thumbnail.jpg": still("160x120") + "-pix_fmt yuvj420p",
    },
}


def run(*command):
    done = subprocess.run([str(part) for part in command], cwd=CORPUS, stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))}\n{done.stderr}")


def run_ffmpeg(options, path):
    run("ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "error", "-y", *options.split(), path)


def make(path, recipe):
    """Makes a file under another name first, so that an interrupted run leaves no part of a file behind."""
    if path.exists():
        return
    path.parent.mkdir(parents=True, exist_ok=True)
    part = path.with_name("part-" + path.name)
    if callable(recipe):
        recipe(part)
    else:
        run_ffmpeg(recipe, part)
    part.rename(path)


def write_texts():
    """Subtitles and chapters of two hours."""
    clock = lambda seconds: f"{seconds // 3600:02}:{seconds // 60 % 60:02}:{seconds % 60:02},000"
    (CORPUS / "talk.srt").write_text("".join(
        f"{i + 1}\n{clock(5 * i)} --> {clock(5 * i + 4)}\nSomebody says sentence {i + 1}.\n\n" for i in range(1440)))
    (CORPUS / "chapters.txt").write_text(";FFMETADATA1\n" + "".join(
        f"[CHAPTER]\nTIMEBASE=1/1\nSTART={300 * i}\nEND={300 * i + 300}\ntitle=Chapter {i + 1}\n" for i in range(24)))


def make_all():
    """Makes what is missing; {group: paths}."""
    CORPUS.mkdir(parents=True, exist_ok=True)
    write_texts()
    groups = {group: {CORPUS / group.replace(" ", "-") / name: recipe for name, recipe in files.items()}
              for group, files in FILES.items()}
    stages = [{CORPUS / "material" / name: recipe for name, recipe in stage.items()} for stage in (SOURCES, MATERIAL)]
    stages.append({path: recipe for files in groups.values() for path, recipe in files.items()})
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        for stage in stages:
            list(workers.map(make, stage.keys(), stage.values()))
    return {group: list(files) for group, files in groups.items()}
