import itertools
import os

import pytest

import kolum


def test_items_come_in_the_order_of_names(samples):
    names = [os.path.basename(item.file) for item in kolum.scan(samples / "Videos", jobs=3)]
    assert names == ["VIDEO_TS.IFO", "evening-news.ts", "harbour.mp4", "holiday.avi", "short-film.mkv"]


def test_errors_are_items(tmp_path, samples):
    (tmp_path / "a.png").write_bytes((samples / "Photos/bars.png").read_bytes())
    (tmp_path / "b.png").write_text("no picture")
    (tmp_path / "c.png").write_bytes((samples / "Photos/bars.png").read_bytes())
    first, second, third = kolum.scan(tmp_path)
    assert isinstance(first, kolum.Photo) and isinstance(third, kolum.Photo)
    assert isinstance(second, kolum.KolumError) and second.code == "not-media"


def test_kinds_can_be_chosen(samples):
    assert {type(item) for item in kolum.scan(samples, kinds=["photo"])} == {kolum.Photo}


def test_hidden_files_and_links_to_folders_are_left_out(tmp_path, samples):
    picture = (samples / "Photos/bars.png").read_bytes()
    (tmp_path / ".hidden.png").write_bytes(picture)
    (tmp_path / "seen.png").write_bytes(picture)
    (tmp_path / "loop").symlink_to(tmp_path)
    assert [os.path.basename(path) for path in kolum.files([tmp_path])] == ["seen.png"]


def test_scan_can_be_left_early(samples):
    first = list(itertools.islice(kolum.scan([samples] * 50, jobs=2), 1))
    assert len(first) == 1


def test_several_roots_and_single_files(samples):
    items = list(kolum.scan([samples / "Photos", samples / "Videos/harbour.mp4"]))
    assert len(items) == 3


@pytest.mark.parametrize("name, kind", [("a.MP3", "music"), ("b.jpg", "photo"), ("c.mkv", "video"),
                                        ("d.txt", None), ("noextension", None)])
def test_kind_of_a_name(name, kind):
    assert kolum.kind_of_name(name) == kind
