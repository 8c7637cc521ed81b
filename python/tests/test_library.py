import sqlite3

import pytest

import kolum


@pytest.fixture(scope="module")
def library(tmp_path_factory, samples, kolum_tool):
    path = tmp_path_factory.mktemp("library") / "library.db"
    kolum_tool("scan", "--library", str(path), str(samples / "Music"), str(samples / "Videos"))
    with kolum.Library(path) as opened:
        yield opened


def test_find_gives_documents(library):
    song = next(library.find(kind="music", text="first tone"))
    assert isinstance(song, kolum.Song) and song.title == "First Tone"


def test_text_is_looked_for_in_paths_and_in_all_tags(library):
    assert list(library.find(text="FIRST tone")) == list(library.find(where="tags LIKE '%first tone%'"))
    assert {item.file for item in library.find(text="SHORT-film")} == {
        row["path"] for row in library.query("SELECT path FROM files WHERE name LIKE 'short-film%'")}
    assert not list(library.find(text="nowhere to be found"))


def test_earlier_library_says_what_to_do(tmp_path):
    earlier = tmp_path / "earlier.db"
    with sqlite3.connect(earlier) as database:
        database.execute("PRAGMA user_version = 1")
    with pytest.raises(ValueError, match="the next kolum scan"):
        kolum.Library(earlier)


def test_find_says_the_size_and_last_change_of_files(library):
    song = next(library.find(kind="music"))
    probed = kolum.probe(song.file)
    assert (song.raw["size"], song.raw["modified"]) == (probed.raw["size"], probed.raw["modified"])


def test_files_without_a_dlna_profile_are_found(library):
    without = [item.file for item in library.find(kind="video", dlna=None)]
    assert any(name.endswith("short-film.mkv") for name in without)
    assert not any(name.endswith("harbour.mp4") for name in without)
    named = list(library.find(dlna="AVC_MP4_BL_L31_HD_AAC"))
    assert len(named) == 1


def test_conditions_are_sql_with_parameters(library):
    wide = list(library.find(where="width >= ?", parameters=[1280]))
    assert [item.width for item in wide] == [1280]
    rows = library.query("SELECT kind, count(*) AS files FROM files GROUP BY kind ORDER BY kind")
    assert {row["kind"]: row["files"] for row in rows}["video"] >= 4


def test_codec_is_that_of_pictures_or_sound(library):
    assert {type(item) for item in library.find(codec="h264")} == {kolum.Video}
    assert kolum.Song in {type(item) for item in library.find(codec="mp3")}


def test_library_is_not_written(library):
    with pytest.raises(sqlite3.OperationalError):
        list(library.query("DELETE FROM file"))


def test_missing_library_is_an_error(tmp_path):
    with pytest.raises(FileNotFoundError):
        kolum.Library(tmp_path / "none.db")
