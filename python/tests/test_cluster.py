"""Scans by many machines: real schedulers and workers, as processes of this one."""

import os
import subprocess
import sys
import time

import pytest

import kolum.cluster
from machines import FILES, content, expect_all, most_at_a_time, program, scanned_here, slow, wait_until


# ---- The same answers


def test_library_is_that_of_a_local_scan(machines, share, library, tmp_path):
    machines.worker("a")
    machines.worker("b")
    first = machines.scanned(library, "--batch-files", 3, share, status=1)
    assert (first.summary["new"], first.summary["described"], first.summary["failed"]) == (FILES, FILES - 1, 1)
    assert first.summary["failedByReason"] == [{"code": "not-media", "count": 1}]
    assert sum(first.by_machine.values()) == FILES and set(first.by_machine) == {"a", "b"}
    expect_all(library, share, tmp_path)

    (share / "00.png").write_bytes((share / "01.png").read_bytes() + b" ")
    again = machines.scanned(library, share)
    assert (again.summary["new"], again.summary["changed"], again.summary["described"]) == (0, 1, 1)
    local = subprocess.run([os.environ["KOLUM_TOOL"], "scan", "--json", "--library", library, share], capture_output=True,
                           text=True).stdout
    assert f'"unchanged":{FILES}' in local


def test_local_cluster_needs_no_scheduler(samples, library, tmp_path):
    said = subprocess.run([sys.executable, "-m", "kolum.cluster", "scan", "--local", "2", "--library", library, samples],
                          capture_output=True, text=True, check=True)
    assert "Scanned" in said.stdout and said.stderr == ""
    assert content(library) == content(scanned_here(samples, tmp_path / "here.db"))


def test_machines_are_asked_for_what_the_scan_wants(machines, samples, library, tmp_path):
    asked = tmp_path / "asked"
    machines.worker("a", tool=program(tmp_path / "noting", f'echo "$@" >>"{asked}"'))
    machines.scanned(library, "--fingerprint", "--places", samples)
    assert any("probe --fingerprint --places" in line for line in asked.read_text().splitlines())
    here = tmp_path / "here.db"
    subprocess.run([os.environ["KOLUM_TOOL"], "scan", "--fingerprint", "--places", "--library", here, samples], check=True,
                   capture_output=True)
    assert content(library) == content(here)


# ---- How much at a time


@pytest.mark.parametrize("readers, is_expected", [("1", lambda most: most == 1), ("64", lambda most: most > 1)])
def test_readers_of_a_server_are_counted_in_the_whole_cluster(machines, share, library, tmp_path, readers, is_expected):
    log = tmp_path / "slow.log"
    tool = slow(tmp_path / "slow", log, 0.5)
    for name in ("a", "b", "c"):
        machines.worker(name, tool=tool)
    machines.scanned(library, "--readers", readers, "--batch-files", 8, share, status=1)
    assert is_expected(most_at_a_time(log))


def test_library_in_use_is_an_error(machines, share, library):
    machines.worker("a")
    writer = subprocess.Popen([os.environ["KOLUM_TOOL"], "library", "add", "--library", library], stdin=subprocess.PIPE,
                              stdout=subprocess.DEVNULL)
    wait_until(lambda: library.exists())
    time.sleep(0.2)
    from distributed import Client
    with Client(machines.address, set_as_default=False) as client:
        with pytest.raises(kolum.cluster.ClusterError, match="in use"):
            kolum.cluster.scan(client, [share], library)
    writer.communicate()


# ---- Without Dask


def test_module_loads_without_dask_and_says_what_is_missing(tmp_path, share):
    code = ("import sys; sys.modules['distributed'] = None\n"
            "import kolum.cluster\n"
            f"sys.exit(kolum.cluster.main(['scan', '--local', '2', {str(share)!r}]))")
    said = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True)
    assert said.returncode == 1 and "Dask is missing" in said.stderr and "python3-distributed" in said.stderr


@pytest.mark.parametrize("arguments", [["--local", "0", "x"], ["x"], ["--local", "2", "--scheduler", "a", "x"],
                                       ["--local", "2", "--map", "x", "x"], ["--local", "2", "--readers", "a=b", "x"],
                                       ["--local", "2", "--batch-bytes", "3Q", "x"]])
def test_wrong_arguments_are_refused(arguments):
    said = subprocess.run([sys.executable, "-m", "kolum.cluster", "scan", *arguments], capture_output=True, text=True)
    assert said.returncode == 2 and "usage:" in said.stderr
