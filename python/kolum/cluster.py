"""A scan by many machines, with Dask.

    import distributed, kolum.cluster
    with distributed.Client("tcp://scheduler:8786") as client:
        summary = kolum.cluster.scan(client, ["/share"], "library.db")

The coordinator, which calls this, walks the folders and writes the library; batches of files go to the
machines, where each file is read by that machine's own kolum in isolation. docs/cluster.md says what is
promised. The command is "kolum-cluster", or "python3 -m kolum.cluster".
"""

from __future__ import annotations

import os
import threading
from typing import TYPE_CHECKING, Collection, Mapping

from ._batches import Limits
from ._coordinator import READERS, ClusterError, Coordinator, Note, Options, Progress, Report, Summary, VersionMismatch

if TYPE_CHECKING:
    from distributed import Client

__all__ = ["ClusterError", "Limits", "Progress", "Summary", "VersionMismatch", "main", "scan"]

Path = str | os.PathLike


def _absolute(path: Path) -> str:
    return os.path.abspath(os.fspath(path))


def scan(client: Client, roots: Path | Collection[Path], library: Path | None = None, *,
         map: Mapping[str, str] | None = None, resources: Mapping[str, str] | None = None,
         readers: int | Mapping[str, int] = READERS, limits: Limits = Limits(), ahead: int | None = None,
         exclude: Collection[str] = (), by_content: bool = False, fingerprint: bool = False, places: bool = False,
         wait: bool = False, patience: float = 240, progress: Report | None = None, note: Note | None = None,
         stop: threading.Event | None = None) -> Summary:
    """Describes the media below folders that are new or changed, on all machines of a cluster.

    "library" is a file of this machine; without it, the library of "kolum scan". "map" says where
    folders of this machine are mounted on the others; "resources" names, for a root, the Dask
    resource of the machines that see it. "readers" is how many files of each storage server are read
    at a time, in the whole cluster: a number, or numbers by server, where "" stands for all others.
    "limits" says how large a batch may be, and "ahead" how many batches of a root are waiting or being
    read at a time. "exclude", "by_content", "fingerprint" and "places" are those of "kolum scan";
    "wait" waits while another process writes to the library. A batch without any answer for "patience"
    seconds is tried again.

    "progress" is called twice a second, "note" with each remark for people; "stop" ends the scan when
    it is set. Raises ClusterError when the scan cannot go on; what it has found is kept then.
    """
    given = [roots] if isinstance(roots, (str, os.PathLike)) else list(roots)
    by_server = dict(readers) if isinstance(readers, Mapping) else {"": readers}
    options = Options(
        map=tuple((_absolute(here), there) for here, there in (map or {}).items()),
        resources={_absolute(root): name for root, name in (resources or {}).items()},
        readers=by_server, most_readers=by_server.get("", READERS), limits=limits, ahead=ahead, exclude=tuple(exclude),
        by_content=by_content, fingerprint=fingerprint, places=places, wait=wait, patience=patience)
    name = os.fspath(library) if library is not None else None
    return Coordinator(client, given, name, options, progress or (lambda _: None), note or (lambda _: None),
                       stop or threading.Event()).run()


def main(arguments: list[str] | None = None) -> int:
    """The command "kolum-cluster"."""
    from ._cluster_command import run
    return run(arguments)


if __name__ == "__main__":
    # As a module of its own name, so that machines find its functions.
    from kolum.cluster import main as command
    raise SystemExit(command())
