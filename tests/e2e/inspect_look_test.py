"""TaVekInspect info and list: what archives and installation directories are and hold."""

from harness.documents import app, entry, file, host_script, unified_manifest
from harness.executable import executable
from harness.inspection import Inspection
from harness.scenario import EXECUTABLE_PATH
from harness.zip_builder import Member


class Info(Inspection):
    def test_an_archive_as_text(self):
        self.installed()
        text = self.inspect("info", "new.pkg")
        self.assertIn("Platform:      linux_arm7\n", text)
        self.assertIn("Host version:  6.1.2.57\n", text)
        self.assertIn("5 members (2 deflated, 3 stored)", text)
        self.assertIn("Packages: 1\n  New\n    VekApp: a.so -> /a.so\n", text)
        self.assertIn("  R2, R4, R4-mc\n    /app/host <- host/app\n    /a.so <- data/12345-a.so\n", text)
        self.assertIn("  R2\n    /app/lib.so <- host/lib.so\n", text)

    def test_an_archive_as_json(self):
        self.installed()
        told = self.document("info", "new.pkg")
        self.assertEqual((told["platform"], told["hostVersion"]), ("linux_arm7", "6.1.2.57"))
        self.assertEqual(
            told["manifest"], {"present": True, "beVersion": "6.1.2.57", "platform": "linux_arm7"}
        )
        self.assertEqual(told["container"]["members"], 5)
        own = {"type": "VekApp", "source": "a.so", "destination": "/a.so", "defaultDestination": False}
        self.assertEqual(told["packages"], [{"name": "New", "files": [own]}])
        self.assertEqual(
            told["scriptEntries"][2],
            {"name": "/a.so", "source": "data/12345-a.so", "controllers": ["R2", "R4", "R4-mc"]},
        )

    def test_an_installation_directory(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        self.write(
            "tools/vekPackages.xml", unified_manifest("win", app("New", entry("VekApp", "a", "a.dll")))
        )
        told = self.document("info", "tools")
        self.assertEqual(
            (told["installation"], told["platform"], told["hostVersion"]), (True, "win", "6.1.2.57")
        )
        self.assertEqual(told["packages"][0]["files"][0]["destination"], "a.dll")
        self.assertIn("installation directory", self.inspect("info", "tools"))

    def test_an_archive_without_manifest(self):
        self.host_archive("sensor.pkg")
        self.assertEqual(self.document("info", "sensor.pkg")["manifest"]["present"], False)
        self.assertIn("Packages: 0\n", self.inspect("info", "sensor.pkg"))

    def test_a_default_destination(self):
        manifest = unified_manifest("linux_arm7", app("New", entry("VekApp", "lib/a.so", "")))
        self.host_archive("sensor.pkg", manifest=manifest)
        self.assertIn("lib/a.so -> /user/a.so (default)\n", self.inspect("info", "sensor.pkg"))

    def test_what_is_not_there(self):
        stderr = "missing.pkg: error: Path not found: missing.pkg\n"
        self.assertEqual(self.inspect("info", "missing.pkg", status=1, stderr=stderr), "")
        self.assertEqual(len(self.document("info", "missing.pkg", status=1)["problems"]), 1)

    def test_what_is_no_archive(self):
        self.write("text.pkg", "no archive")
        reason = "neither an archive nor an installation directory: no end record: not a ZIP archive"
        self.inspect("info", "text.pkg", status=1, stderr=f"text.pkg: error: {reason}\n")

    def test_a_script_that_cannot_be_read_hides_nothing_else(self):
        self.archive("bad.pkg", "<Startup>\n</File>", unified_manifest("linux_arm7", app("New")))
        told = self.document("info", "bad.pkg", status=1)
        self.assertEqual(told["packages"], [{"name": "New", "files": []}])
        self.assertEqual(told["platform"], "")
        self.assertRegex(told["problems"][0]["text"], "^script.xml:2:")

    def test_names_that_a_terminal_would_obey(self):
        self.host_archive("sensor.pkg", members=[Member("a\x1b[2Jb", b"x")])
        self.assertIn("\ta?[2Jb\t", self.inspect("list", "sensor.pkg"))
        self.assertEqual(self.document("list", "sensor.pkg")["members"][-1]["name"], "a\x1b[2Jb")


class List(Inspection):
    def test_members_and_who_refers_to_them(self):
        self.installed()
        lines = [line.split("\t") for line in self.inspect("list", "new.pkg").splitlines()]
        self.assertEqual(
            lines[0][:6], ["200", "10", "deflated", "5775d99a", "2024-06-19 13:33:22", "host/app"]
        )
        self.assertEqual(lines[0][6:], ["/app/host", ""])
        self.assertEqual(lines[4][5:], ["data/12345-a.so", "/a.so", "New"])

    def test_as_json(self):
        self.installed()
        last = self.document("list", "new.pkg")["members"][-1]
        self.assertEqual((last["scriptEntries"], last["packages"]), (["/a.so"], ["New"]))
        self.assertEqual((last["size"], last["method"], last["encrypted"]), (15, 0, False))

    def test_a_member_of_two_entries(self):
        script = host_script(
            "linux_arm7", file("/one", "data/12345-x", "R2"), file("/two", "data/12345-x", "R4")
        )
        self.archive("sensor.pkg", script, members=[Member("data/12345-x", b"x")])
        self.assertEqual(
            self.document("list", "sensor.pkg")["members"][-1]["scriptEntries"], ["/one", "/two"]
        )

    def test_a_name_that_is_no_utf8(self):
        self.host_archive("sensor.pkg", members=[Member("caf" + "\u00e9", b"x")])
        blob = self.read("sensor.pkg").replace("café".encode(), b"caf\xe9\xe9")
        self.write("sensor.pkg", blob)
        self.assertEqual(self.document("list", "sensor.pkg")["members"][-1]["name"], "caf\ufffd\ufffd")

    def test_an_installation_directory_has_none(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        stderr = "tools: error: an installation directory has no members\n"
        self.assertEqual(self.inspect("list", "tools", status=1, stderr=stderr), "")
