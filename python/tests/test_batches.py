import os

import pytest

from kolum import _batches as parts
from kolum._batches import Batch, Found, Limits


def found(name, size=1, server="nas"):
    return Found(name.encode(), True, size, server)


def names(batches):
    return [[os.fsdecode(each.name) for each in batch.files] for batch in batches]


def test_batches_are_cut_by_number():
    assert names(parts.batches("/", map(found, "abcde"), Limits(files=2))) == [["a", "b"], ["c", "d"], ["e"]]


def test_batches_are_cut_by_bytes_but_have_one_file():
    files = [found("a", 3), found("b", 3), found("c", 20), found("d", 1)]
    assert names(parts.batches("/", files, Limits(bytes=7))) == [["a", "b"], ["c"], ["d"]]


def test_batches_are_of_one_server():
    files = [found("a", server="x"), found("b", server="y"), found("c", server="x")]
    assert names(parts.batches("/", files, Limits())) == [["a", "c"], ["b"]]


def test_batches_come_as_soon_as_they_are_full():
    def endless():
        while True:
            yield found("a")

    assert len(next(parts.batches("/", endless(), Limits(files=3))).files) == 3


def test_halves_have_all_files():
    batch = Batch("/", tuple(map(found, "abcde")), tries=3)
    assert names(batch.halves()) == [["a", "b"], ["c", "d", "e"]]
    assert [half.tries for half in batch.halves()] == [0, 0]


@pytest.mark.parametrize("path, expected", [(b"/share/a", b"/mnt/nas/a"), (b"/share", b"/mnt/nas"), (b"/shared/a", b"/shared/a"),
                                            (b"/share/deep/a", b"/deep/a"), (b"/share/caf\xe9", b"/mnt/nas/caf\xe9")])
def test_longest_mapped_folder_counts(path, expected):
    assert parts.mapped(path, (("/share", "/mnt/nas/"), ("/share/deep", "/deep"))) == expected


def test_root_can_be_mapped_both_ways():
    assert parts.mapped(b"/a/b", (("/", "/mnt"),)) == b"/mnt/a/b"
    assert parts.mapped(b"/mnt/a", (("/mnt", "/"),)) == b"/a"
    assert parts.mapped(b"/mnt", (("/mnt", "/"),)) == b"/"


@pytest.mark.parametrize("name", [b"/plain.mp3", "/Größe.mp3".encode(), b"/caf\xe9 %41.mp3", b"/two\nlines.mp3"])
def test_names_survive_json(name):
    line = parts.with_name({"schema": 2, "file": "old", "fileBytes": "old%E9", "kind": {}}, name)
    assert parts.name_in(line) == name
    assert ("fileBytes" in line) == (b"\xe9" in name)


def test_server_is_that_of_the_nearest_mount(tmp_path):
    table = tmp_path / "mountinfo"
    table.write_text("21 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
                     "22 21 0:40 / /share rw shared:3 - nfs4 nas:/export/media rw\n"
                     "23 22 0:41 / /share/more rw - nfs4 nas:/export/more rw\n"
                     "24 21 0:42 / /mnt/with\\040space rw - cifs //filer/films rw\n"
                     "25 21 0:43 / /home/x rw - fuse.sshfs me@host:/srv rw\n"
                     "26 21 0:44 / /data rw - ceph 10.0.0.1:6789,10.0.0.2:6789:/ rw\n")
    servers = parts.Servers(table)
    expected = {"/share": "nas", "/share/more/a": "nas", "/shared": "disk 8:1", "/mnt/with space/b": "filer",
                "/home/x/y": "me@host", "/data/z": "10.0.0.1:6789,10.0.0.2:6789", "/": "disk 8:1"}
    assert {folder: servers.of_folder(folder.encode()) for folder in expected} == expected
