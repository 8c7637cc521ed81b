"""Scans by machines that are not equal, or see shares elsewhere."""

import os
import subprocess

from machines import FILES, begun, expect_all, finished, paths_in, program, slow, wait_until


# ---- Machines that differ


def test_other_version_is_refused_with_both_names(machines, share, library, tmp_path):
    machines.worker("old", tool=program(tmp_path / "old", 'if [ "$1" = --version ]; then echo "kolum 0.9.9"; exit; fi'))
    result = machines.scanned(library, share, status=1)
    own = subprocess.run([os.environ["KOLUM_TOOL"], "--version"], capture_output=True, text=True).stdout.strip()
    assert "old at tcp://" in result.err and "has kolum 0.9.9, libavformat" in result.err
    assert f"the coordinator has {own}, libavformat" in result.err
    assert not library.exists()


def test_other_version_is_refused_when_its_machine_comes_later(machines, share, library, tmp_path):
    log = tmp_path / "slow.log"
    machines.worker("a", tool=slow(tmp_path / "slow", log, 1))
    scan = machines.scan(library, "--batch-files", 1, share)
    wait_until(lambda: begun(log))
    machines.worker("old", tool=program(tmp_path / "old", 'if [ "$1" = --version ]; then echo "kolum 0.9.9"; exit; fi'))
    assert "(old) has kolum 0.9.9" in finished(scan, 1).err


def test_machine_without_the_package_is_named(machines, share, library, tmp_path):
    machines.worker("bare", environment={"PYTHONPATH": ""})
    err = machines.scanned(library, share, status=1).err
    assert "bare at tcp://" in err and "cannot load the Python package kolum" in err


def test_machine_without_kolum_is_named(machines, share, library, tmp_path):
    machines.worker("bare", tool=tmp_path / "missing")
    result = machines.scanned(library, share, status=1)
    assert "bare at tcp://" in result.err and "missing does not run" in result.err


# ---- Shares that are elsewhere


def elsewhere(share, mount):
    """A command's prefix: for it, the share is at "mount", and an empty folder where it was."""
    return ["unshare", "--map-root-user", "--mount", "bash", "-c",
            f"mount --bind '{share}' '{mount}' && mount -t tmpfs none '{share}' && exec \"$0\" \"$@\""]


def test_shares_may_be_mounted_elsewhere(machines, share, library, tmp_path):
    mount = tmp_path / "mount"
    mount.mkdir()
    for name in ("a", "b"):
        machines.worker(name, before=elsewhere(share, mount))
    result = machines.scanned(library, "--map", f"{share}={mount}", "--batch-files", 3, share, status=1)
    assert set(result.by_machine) == {"a", "b"}
    expect_all(library, share, tmp_path)


def test_share_that_no_machine_sees_is_no_failure_of_its_files(machines, share, library, tmp_path):
    mount = tmp_path / "mount"
    mount.mkdir()
    machines.worker("blind", before=elsewhere(share, mount))
    result = machines.scanned(library, "--batch-files", 3, share, status=1)
    assert f"no machine sees the files below {share}" in result.err
    assert paths_in(library) == []


def test_files_go_to_machines_that_see_them(machines, share, library, tmp_path):
    mount = tmp_path / "mount"
    mount.mkdir()
    machines.worker("blind", before=elsewhere(share, mount))
    machines.worker("seeing")
    result = machines.scanned(library, "--batch-files", 3, share, status=1)
    assert result.by_machine == {"seeing": FILES}
    assert "(blind) does not see the files below" in result.err
    expect_all(library, share, tmp_path)


def test_machines_without_the_resource_do_not_stand_in_for_blind_ones(machines, share, library, tmp_path):
    mount = tmp_path / "mount"
    mount.mkdir()
    machines.worker("blind", "--resources", "NAS=1", before=elsewhere(share, mount))
    machines.worker("plain")
    result = machines.scanned(library, "--resource", f"{share}=NAS", share, status=1)
    assert f"no machine sees the files below {share}" in result.err


def test_resources_say_which_machines_see_a_root(machines, share, library, tmp_path):
    machines.worker("plain", tool=program(tmp_path / "none", 'if [ "$1" = probe ]; then exit 9; fi'))
    failed = machines.scanned(library, "--resource", f"{share}=NAS", share, status=1)
    assert "no machine has the resource NAS" in failed.err
    machines.worker("near", "--resources", "NAS=1")
    result = machines.scanned(library, "--resource", f"{share}=NAS", "--batch-files", 3, share, status=1)
    assert result.by_machine == {"near": FILES} and result.summary["redone"] == 0
