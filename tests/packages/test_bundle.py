"""The bundle on bare systems that have a display and nothing else: `scripts/test packages` builds and tries it."""

from __future__ import annotations

import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

from desktop.desktops import Desktop, X11Desktop
from desktop.panels import BareCompositor
from desktop.pictures import Rectangle
from desktop.session import NOBODY
from endtoend.hardening import lacks_of_hardening
from endtoend.waiting import eventually

from .bundles import FOLDER, OnBareSystem, unpack
from .system import PATIENCE, printed

BUILT = pathlib.Path(os.environ["TARNWICK_PACKAGES"])
LARGEST = 25_000_000  # bytes
# The C library with its loader and the compiler's libraries.
OF_SYSTEM = re.compile(
    r"(ld-linux-.*\.so\.\d|lib(c|dl|m|pthread|resolv|rt)\.so\.\d|libgcc_s\.so\.1|libstdc\+\+\.so\.6)[\d.]*"
)
WINDOW = "Tarnwick Settings"
AS_SOMEONE = f"setpriv --reuid={NOBODY} --regid={NOBODY} --clear-groups env HOME=/home/someone"
MAY_PING = f"""
mount -t proc proc /proc # with the numbers of its own processes
mkdir -p /home/someone && chown {NOBODY}:{NOBODY} /home/someone
echo '0 {NOBODY}' >/proc/sys/net/ipv4/ping_group_range
"""
# Runs until this machine has seen its window; prints which files it has mapped, and what it has stored.
SHOW = """
{variables} "{app}/tarnwick" --settings --set Hostname=127.0.0.1 2>/packages/errors &
until [ -e /packages/seen ]; do kill -0 $! || {{ cat /packages/errors >&2; exit 1; }}; sleep 0.1; done
grep -o '/.*\\.so.*' /proc/$!/maps | sort -u
kill $!
wait $!
echo
cat /home/someone/.local/share/Tarnwick/stats.json
"""


class BareX11(X11Desktop):
    """A display without a window manager."""

    name = "bare-x11"
    executables = ("Xvfb",)
    window_manager = ()

    def start_panel(self) -> None:
        pass

    @property
    def strip(self) -> Rectangle:
        return Rectangle(0, 0, 0, 0)


def bundle() -> pathlib.Path:
    (found,) = BUILT.glob("Tarnwick-*.tar.zst")
    return found


def dynamic(file: pathlib.Path, tag: str) -> list[str]:
    """The values that a program or library has for a tag of its dynamic section."""
    done = subprocess.run(["objdump", "-p", file], capture_output=True, text=True, check=True, timeout=PATIENCE)
    return re.findall(rf"^ +{tag} +(\S+)$", done.stdout, re.MULTILINE)


class Bundle(unittest.TestCase):
    app: pathlib.Path
    programs: list[pathlib.Path]
    libraries: list[pathlib.Path]

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.app = unpack(bundle(), pathlib.Path(folder.name) / FOLDER)
        cls.programs = sorted((cls.app / "bin").glob("tarnwick*"))
        cls.libraries = [*(cls.app / "lib").iterdir(), *(cls.app / "plugins").glob("*/*")]

    def test_it_is_small(self) -> None:
        self.assertLess(bundle().stat().st_size, LARGEST)

    def test_it_holds_one_folder(self) -> None:
        done = subprocess.run(["tar", "-tf", bundle()], capture_output=True, text=True, check=True, timeout=PATIENCE)

        self.assertEqual({name.split("/")[0] for name in done.stdout.splitlines()}, {"Tarnwick.app"})

    def test_nothing_needs_a_library_of_the_system_but_the_c_library_and_the_compilers(self) -> None:
        own = {file.name for file in (self.app / "lib").iterdir()}
        for file in [*self.programs, *self.libraries]:
            foreign = [name for name in dynamic(file, "NEEDED") if name not in own and not OF_SYSTEM.fullmatch(name)]
            with self.subTest(file.name):
                self.assertEqual(foreign, [])

    def test_only_the_programs_say_where_libraries_are_and_that_holds_for_all(self) -> None:
        # The newer tag would hold for the programs alone, and after the user's variable.
        for file in [*self.programs, *self.libraries]:
            with self.subTest(file.name):
                self.assertEqual(dynamic(file, "RPATH"), ["$ORIGIN/../lib"] if file in self.programs else [])
                self.assertEqual(dynamic(file, "RUNPATH"), [])

    def test_it_names_its_version_and_no_feed(self) -> None:
        information = json.loads((self.app / "Information.json").read_text(encoding="utf-8"))

        self.assertIn(f"Tarnwick-{information['version']}-", bundle().name)
        self.assertEqual(set(information), {"version", "channel"})

    def test_it_has_the_licence_of_each_package_that_it_is_made_of(self) -> None:
        folder = self.app / "share/doc/tarnwick/libraries"
        packages = [line.split()[0] for line in (folder / "packages").read_text(encoding="utf-8").splitlines()]

        self.assertIn("libqt6core6", packages)
        self.assertIn("libssl3", packages)
        self.assertEqual([package for package in packages if not (folder / package).is_file()], [])

    def test_mistakes_in_memory_are_hard_to_use(self) -> None:
        for program in self.programs:
            with self.subTest(program.name):
                self.assertEqual(lacks_of_hardening(program), [])


class Bare(OnBareSystem):
    @classmethod
    def setUpClass(cls) -> None:
        BareX11.require()
        BareCompositor.require()
        super().setUpClass()

    def archive(self) -> pathlib.Path:
        return bundle()

    def show(self, desktop: Desktop, prepare: str = "", variables: str = "", folder: str = FOLDER) -> list[str]:
        """Shows a window from the bundle in a folder. Returns the libraries that are in use, as the bare system names them."""
        seen = self.shared / "seen"
        seen.unlink(missing_ok=True)
        app = f"/packages/{folder}/Tarnwick.app"
        environment = desktop.session.environment
        named = [f"{name}={environment[name]}" for name in ("DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR") if name in environment]
        script = MAY_PING + prepare + SHOW.format(variables=" ".join((AS_SOMEONE, *named, variables)), app=app)
        display = pathlib.Path("/tmp/.X11-unix") if "DISPLAY" in environment else desktop.session.folder
        process = self.system.start(script, shared=display)

        def is_shown() -> bool:
            return process.poll() is not None or WINDOW in [title for title, _ in desktop.windows()]

        eventually(is_shown, PATIENCE, "the window")
        desktop.screenshot(f"{self.id().rpartition('.')[2]}-{self.suite}.png")
        seen.touch()
        libraries, _, stats = printed(process).partition("\n\n")
        self.assertGreaterEqual(json.loads(stats)["127.0.0.1"]["sent"], 0)
        self.assertNotIn("plugin", (self.shared / "errors").read_text(encoding="utf-8"))
        found = [line[line.index("/packages/") :] if "/packages/" in line else line for line in libraries.splitlines()]
        foreign = [name for name in found if not name.startswith(app)]
        self.assertIn(f"{app}/lib/libQt6Core.so.6", found)
        self.assertEqual([name for name in foreign if not OF_SYSTEM.fullmatch(name.rpartition("/")[2])], [])
        return found

    def test_it_shows_a_window_on_x11(self) -> None:
        self.assertIn(f"{self.app}/plugins/platforms/libqxcb.so", self.show(self.started(BareX11())))

    def test_it_shows_a_window_on_wayland(self) -> None:
        found = self.show(self.started(BareCompositor()))

        self.assertIn(f"{self.app}/plugins/platforms/libqwayland-generic.so", found)

    def test_it_runs_where_it_was_moved_to(self) -> None:
        desktop = self.started(BareX11())
        self.show(desktop)
        (self.shared / FOLDER).rename(self.shared / "elsewhere")

        self.show(desktop, folder="elsewhere")

    def test_it_runs_from_where_nothing_can_be_written(self) -> None:
        read_only = f"""
        mount --bind "{self.app}" "{self.app}"
        mount -o remount,bind,ro "{self.app}"
        ! touch "{self.app}/written" 2>/dev/null
        """

        self.show(self.started(BareX11()), prepare=read_only)

    def test_no_library_is_mixed_in_that_the_users_variables_name(self) -> None:
        other = "/packages/other"
        copy = f'mkdir {other} && cp -r "{self.app}/lib" "{self.app}/plugins" {other}'
        variables = f"LD_LIBRARY_PATH={other}/lib QT_PLUGIN_PATH={other}/plugins QT_QPA_PLATFORM_PLUGIN_PATH={other}/plugins/platforms"

        self.show(self.started(BareX11()), prepare=copy, variables=variables)

    def watch(self, host: str) -> dict[str, object]:
        output = self.system.run(
            f"""
            {MAY_PING}
            echo '127.0.0.1 xn--bcher-kva.example' >>/etc/hosts
            {AS_SOMEONE} "{self.app}/bin/tarnwick-watch" --json --for 3 {host}
            """
        )
        return json.loads(output.splitlines()[-1])

    def test_the_terminal_program_runs(self) -> None:
        last = self.watch("127.0.0.1")

        self.assertEqual((last["status"], last["notices"]), ("up", []))

    def test_the_terminal_program_finds_hosts_beyond_ascii(self) -> None:
        self.assertEqual(self.watch("bücher.example")["resolvedAddress"], "127.0.0.1")


class Debian12(Bare, unittest.TestCase):
    suite = "bookworm"


class Debian13(Bare, unittest.TestCase):
    suite = "trixie"


if __name__ == "__main__":
    unittest.main()
