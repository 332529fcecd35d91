"""A root folder like that inside a sandbox: what this machine has, and a file that says which program is shut in."""

from __future__ import annotations

from .session import Session

# The number of this run of the program: by it services find the process.
INSTANCE = "1"
# By this file both the program and the services outside know.
INFO = """[Application]
name={application}

[Instance]
instance-id={instance}

[Context]
shared=network;ipc;
"""
# Makes the root in the folder named first, with the file named second in it, says in the file named third which process
# this is, and becomes the command that follows.
MAKE_ROOT_AND_RUN = """set -e
root=$1
info=$2
process=$3
shift 3
mount -t tmpfs -o mode=755 tmpfs "$root"
for path in /*; do
    if [ -L "$path" ]; then
        cp -P "$path" "$root$path"
    elif [ -d "$path" ]; then
        mkdir "$root$path"
        mount --rbind "$path" "$root$path"
    fi
done
cp "$info" "$root/.flatpak-info"
echo "{\\"child-pid\\": $$}" >"$process"
exec chroot "$root" "$@"
"""


def sandbox_prefix(session: Session, application: str) -> list[str]:
    """What to put before a command so that it runs inside, as the application of that name. It keeps its process."""
    root = session.folder / "root"
    root.mkdir()
    info = session.folder / "flatpak-info"
    session.write(info, INFO.format(application=application, instance=INSTANCE))
    process = session.runtime / f".flatpak/{INSTANCE}/bwrapinfo.json"
    process.parent.mkdir(parents=True)
    # Mounts are private in the laboratory already, and in a changed root they can't be made so again.
    own_mounts = ["unshare", "--mount", "--propagation", "unchanged"]
    return [*own_mounts, "sh", "-c", MAKE_ROOT_AND_RUN, "sh", *map(str, (root, info, process))]
