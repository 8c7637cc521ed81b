"""Scans by many machines that lose some of them, or meet files that harm."""

import os
import shutil
import signal
import subprocess
from pathlib import Path

from machines import FILES, begun, expect_all, finished, paths_in, program, slow, wait_until


# ---- Machines that leave


def test_batch_of_a_killed_worker_is_done_elsewhere(machines, share, library, tmp_path):
    log = tmp_path / "slow.log"
    victim = machines.worker("victim", tool=slow(tmp_path / "slow", log, 60))
    machines.worker("other")
    scan = machines.scan(library, "--batch-files", 2, share)
    wait_until(lambda: begun(log))
    os.killpg(victim.pid, signal.SIGKILL)
    result = finished(scan, 1)
    assert set(result.by_machine) == {"other"}
    assert len(paths_in(library)) == len(set(paths_in(library))) == FILES
    expect_all(library, share, tmp_path)


def test_slow_worker_does_little_and_holds_up_nothing(machines, share, library, tmp_path):
    machines.worker("slow", tool=slow(tmp_path / "slow", tmp_path / "slow.log", 2))
    machines.worker("fast")
    result = machines.scanned(library, "--batch-files", 1, share, status=1)
    assert result.by_machine["fast"] > result.by_machine.get("slow", 0)
    expect_all(library, share, tmp_path)


def test_scan_goes_on_with_a_restarted_scheduler(machines, share, library, tmp_path):
    log = tmp_path / "slow.log"
    tool = slow(tmp_path / "slow", log, 0.3)
    machines.worker("before", tool=tool)
    scan = machines.scan(library, "--batch-files", 2, share)
    wait_until(lambda: log.exists() and log.read_text().count("end") >= 3)
    os.killpg(machines.scheduler.pid, signal.SIGKILL)
    machines.scheduler.wait()
    machines.start_scheduler()
    machines.worker("after")
    result = finished(scan, 1)
    assert result.by_machine["after"] > 0 and result.summary["redone"] > 0
    expect_all(library, share, tmp_path)


def test_scan_without_its_scheduler_ends_and_the_next_one_goes_on(machines, share, library, tmp_path):
    log = tmp_path / "slow.log"
    machines.worker("before", tool=slow(tmp_path / "slow", log, 0.5))
    scan = machines.scan(library, "--batch-files", 2, share)
    wait_until(lambda: log.exists() and log.read_text().count("end") >= 3)
    os.killpg(machines.scheduler.pid, signal.SIGKILL)
    machines.scheduler.wait()
    failed = finished(scan, 1)
    assert "the scheduler does not answer any more" in failed.err and failed.summary == {}
    kept = len(paths_in(library))
    assert 0 < kept < FILES
    machines.start_scheduler()
    machines.worker("after")
    result = machines.scanned(library, share, status=1)
    assert result.summary["new"] == FILES - kept
    expect_all(library, share, tmp_path)


def test_killed_coordinator_goes_on_where_it_was(machines, share, library, tmp_path):
    log = tmp_path / "slow.log"
    machines.worker("a", tool=slow(tmp_path / "slow", log, 0.3))
    scan = machines.scan(library, "--batch-files", 2, share)
    wait_until(lambda: log.exists() and log.read_text().count("end") >= 4)
    scan.kill()
    scan.communicate()
    result = machines.scanned(library, "--batch-files", 2, share, status=1)
    assert 0 < result.summary["new"] < FILES
    assert len(paths_in(library)) == FILES
    expect_all(library, share, tmp_path)


def test_interrupted_scan_says_what_it_has_done(machines, share, library, tmp_path):
    log = tmp_path / "slow.log"
    machines.worker("a", tool=slow(tmp_path / "slow", log, 0.3))
    scan = machines.scan(library, "--batch-files", 2, share)
    wait_until(lambda: log.exists() and log.read_text().count("end") >= 4)
    scan.send_signal(signal.SIGINT)
    result = finished(scan, -signal.SIGINT)
    assert result.summary["stopped"] and 0 < result.summary["described"] == len(paths_in(library))


# ---- Files that harm


def test_poison_costs_one_file(machines, share, library, tmp_path):
    """The worker's readers are taken over by a file whose name says what it does."""
    (tmp_path / "isolation").mkdir()
    shutil.copy(os.environ["KOLUM_ATTACKING_WORKER"], tmp_path / "isolation/kolum-worker")
    tool = tmp_path / "tools/kolum/kolum"
    tool.parent.mkdir(parents=True)
    shutil.copy(os.environ["KOLUM_TOOL"], tool)
    few = tmp_path / "few"
    few.mkdir()
    for name in ("a.png", "z.png"):
        shutil.copy(share / "00.png", few / name)
    (few / "crash.jpg").write_text("culprit")
    machines.worker("a", tool=tool, environment={"LD_LIBRARY_PATH": str(Path(os.environ["KOLUM_LIBRARY"]).parent)})
    result = machines.scanned(library, few, status=1)
    assert result.summary["failedByReason"] == [{"code": "reader-crashed", "count": 1}]
    assert result.summary["described"] == 2 and result.summary["redone"] == 0


def test_file_that_no_batch_survives_is_found_and_skipped(machines, share, library, tmp_path):
    stuck = program(tmp_path / "stuck", 'if [ "$1" = probe ]; then names=$(mktemp); trap \'rm "$names"\' EXIT; cat >"$names"\n'
                                        'grep -q 07.mp3 "$names" && sleep 600\n"$REAL" "$@" <"$names"; exit; fi')
    machines.worker("a", tool=stuck)
    machines.worker("b", tool=stuck)
    result = machines.scanned(library, "--patience", 1, "--batch-files", 4, share, status=1)
    assert result.summary["skipped"] == 1 and "07.mp3: kolum said nothing for 1 seconds" in result.err
    assert len(paths_in(library)) == FILES - 1
    machines.worker("c")
    assert [os.path.basename(line) for line in subprocess.run(
        [os.environ["KOLUM_TOOL"], "library", "stale", "--library", library, share], capture_output=True,
        text=True).stdout.splitlines()] == ["07.mp3"]
