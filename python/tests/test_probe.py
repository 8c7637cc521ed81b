import dataclasses
import json
import os
import pickle
import subprocess
import threading
from pathlib import Path

import pytest

import kolum


def test_song_has_its_tags_and_numbers(samples):
    song = kolum.probe(samples / "Music/Tones/01-first-tone.mp3")
    assert isinstance(song, kolum.Song)
    assert (song.title, song.artist, song.track) == ("First Tone", "The Oscillators", 1)
    assert song.duration == pytest.approx(3.024, abs=0.001)
    assert song.audio_codec == kolum.Identifier(id=86017, name="CODEC_ID_MP3")
    assert song.streams[0].codec_name == "mp3"


def test_video_and_photo_have_classes_of_their_own(samples):
    video = kolum.probe(samples / "Videos/harbour.mp4")
    assert isinstance(video, kolum.Video)
    assert (video.width, video.height, video.title) == (1280, 720, "Harbour at dawn")
    assert video.container_format.brand == "MPEG4_ISOM"
    photo = kolum.probe(samples / "Photos/pattern.jpg")
    assert isinstance(photo, kolum.Photo)
    assert (photo.width, photo.height) == (1600, 1200)


def test_document_is_that_of_the_tool(samples, kolum_tool):
    path = samples / "Videos/short-film.mkv"
    assert kolum.probe(path).raw == json.loads(kolum_tool("probe", "--json", str(path)))


def test_every_key_of_a_document_is_an_attribute(samples):
    for item in kolum.scan(samples):
        if isinstance(item, kolum.KolumError):
            continue
        names = {field.name for field in dataclasses.fields(item)}
        for key in item.raw:
            snake = "".join("_" + c.lower() if c.isupper() else c for c in key)
            assert snake in names or key == "schema", key


@pytest.mark.parametrize("convert", [str, os.fsencode, Path])
def test_paths_may_be_text_bytes_or_objects(samples, convert):
    assert kolum.probe(convert(samples / "Photos/bars.png")).width > 0


def test_path_that_is_no_text_is_found(samples, tmp_path):
    name = os.fsencode(tmp_path) + b"/caf\xe9.png"
    with open(name, "wb") as copy:
        copy.write((samples / "Photos/bars.png").read_bytes())
    assert kolum.probe(name).file_bytes.endswith("caf%E9.png")
    assert kolum.probe(os.fsdecode(name)).width > 0


def test_open_file_keeps_its_position(samples):
    with open(samples / "Music/Tones/02-second-tone.flac", "rb", buffering=0) as file:
        file.seek(7)
        assert kolum.probe(file).title == "Second Tone"
        assert file.tell() == 7


def test_kind_can_be_forced_or_found(samples, tmp_path):
    odd = tmp_path / "song.dat"
    odd.write_bytes((samples / "Music/Tones/01-first-tone.mp3").read_bytes())
    with pytest.raises(kolum.KolumError) as caught:
        kolum.probe(odd)
    assert caught.value.code == "unknown-name"
    assert isinstance(kolum.probe(odd, kind="music"), kolum.Song)
    assert isinstance(kolum.probe(odd, by_content=True), kolum.Song)


def test_details_can_be_left_out(samples):
    song = kolum.probe(samples / "Music/Tones/01-first-tone.mp3", details=False)
    assert song.title is None and song.streams == () and song.sample_rate == 48000


@pytest.fixture
def located(samples, tmp_path):
    """A photo that was taken in Munich."""
    photo = tmp_path / "located.jpg"
    photo.write_bytes((samples / "Photos/pattern.jpg").read_bytes())
    subprocess.run(["exiftool", "-q", "-overwrite_original", "-GPSLatitude=48.1374", "-GPSLatitudeRef=N",
                    "-GPSLongitude=11.5755", "-GPSLongitudeRef=E", photo], check=True)
    return photo


def test_places_are_named_on_request(located, tmp_path):
    assert kolum.probe(located).place is None
    photo = kolum.probe(located, places=True)
    if photo.place is None and "built without" in str(photo.raw["warnings"]):
        pytest.skip("osm_info is built without libgeonames")
    assert (photo.place.name, photo.place.country_code, photo.place.geonames_id) == ("Munich", "DE", 2867714)
    assert photo.place.distance < 1000
    assert [item.place for item in kolum.scan(tmp_path, places=True)] == [photo.place]


def test_copies_have_the_same_fingerprint(samples, tmp_path):
    photo = samples / "Photos/pattern.jpg"
    copy = tmp_path / "copy.jpg"
    copy.write_bytes(photo.read_bytes())
    assert kolum.probe(photo).fingerprint is None
    fingerprint = kolum.probe(photo, fingerprint=True).fingerprint
    assert kolum.probe(copy, fingerprint=True).fingerprint == fingerprint
    copy.write_bytes(photo.read_bytes() + b"more")
    assert kolum.probe(copy, fingerprint=True).fingerprint != fingerprint


def test_odd_files_are_warned_of(samples, tmp_path):
    misnamed = tmp_path / "photo.png"
    misnamed.write_bytes((samples / "Photos/pattern.jpg").read_bytes())
    document = kolum.probe(misnamed)
    assert document.content_type == "image/jpeg"
    assert [warning.code for warning in document.warnings] == ["misnamed"]


def test_missing_file_is_a_file_not_found_error(tmp_path):
    with pytest.raises(FileNotFoundError) as caught:
        kolum.probe(tmp_path / "missing.mp3")
    assert caught.value.code == "not-found"


def test_error_keeps_its_parts_when_pickled(tmp_path):
    (tmp_path / "text.mp4").write_text("no film")
    with pytest.raises(kolum.KolumError) as caught:
        kolum.probe(tmp_path / "text.mp4")
    copy = pickle.loads(pickle.dumps(caught.value))
    assert (type(copy), copy.code, copy.reason) == (kolum.KolumError, "not-media", "not a media file")


def test_arguments_that_make_no_sense_are_refused(tmp_path):
    with pytest.raises(ValueError):
        kolum.probe("a\0b.mp3")
    with pytest.raises(ValueError):
        kolum.probe("")
    with pytest.raises(TypeError):
        kolum.probe(7.5)


def test_threads_run_while_a_file_is_read(samples):
    path = samples / "Videos/harbour.mp4"
    widths = []

    def describe():
        for _ in range(10):
            widths.append(kolum.probe(path).width)

    threads = [threading.Thread(target=describe) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert widths == [1280] * 40
