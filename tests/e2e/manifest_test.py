"""The unified manifest: found or built fresh, packages merged into it, older entries dropped."""

from harness.documents import (
    DECLARATION,
    app,
    element,
    entry,
    file,
    host_script,
    package_manifest,
    platform,
    unified_manifest,
)
from harness.executable import executable
from harness.messages import (
    archive_failed,
    attribute_too_long,
    copied,
    extraction_failed,
    loaded,
    no_attribute,
    no_element,
    processing,
    saving,
    text_too_long,
)
from harness.patterns import located
from harness.program import combined
from harness.scenario import EXECUTABLE_PATH, Scenario


class Manifest(Scenario):
    """Packages with one file a.so for linux_arm7, installed as /a.so, are merged into the archive's manifest."""

    own_entry = entry("VekApp", "a.so", "/a.so")

    def merge(self, before, package, after, files=("a.so",)):
        """Runs a batch that adds the package of the manifest text `package` to an archive holding `before`."""
        contents = self.host_archive(manifest=before)
        self.package("pkgs/new", package, files)
        script_entries = [file("/" + name, "data/12345-" + name, "R2", "R4", "R4-mc") for name in files]
        for name in files[:-1]:
            contents.put("data/12345-" + name, "content of " + name)
        contents.put("script.xml", host_script("linux_arm7", *script_entries))
        contents.put("data/12345-" + files[-1], "content of " + files[-1])
        contents.put("vekPackages.xml", after)
        progress = "".join(loaded("linux_arm7", combined("pkgs/new", name)) for name in files)
        self.check_batch(
            load=["pkgs/new"],
            files={"Custom-sensor.pkg": contents},
            stdout=processing("sensor.pkg") + progress + saving("Custom-sensor.pkg"),
        )

    def new_package(self, name="New"):
        return package_manifest(name, platform("linux_arm7", self.own_entry))

    def expect_merge_fails(self, before, package, message, progress=True):
        self.host_archive(manifest=before)
        self.package("pkgs/new", package, ["a.so"])
        step = loaded("linux_arm7", combined("pkgs/new", "a.so")) if progress else ""
        self.check_batch(
            load=["pkgs/new"],
            stdout=processing("sensor.pkg") + step,
            stderr=archive_failed(message),
            status=1,
        )


class Obtaining(Manifest):
    def expect_refused(self, manifest, detail):
        self.host_archive(manifest=manifest)
        message = located("TaVekUtils_GetUnifiedManifest", -74, "vekPackages.xml:" + detail)
        self.check(
            "--archive", "sensor.pkg", "--manifest", "m.xml", stderr=extraction_failed(message), status=1
        )

    def test_a_fresh_one_names_the_version_and_the_platform(self):
        self.merge(None, self.new_package(), unified_manifest("linux_arm7", app("New", self.own_entry)))

    def test_a_member_that_is_no_document(self):
        self.expect_refused(
            "<VekAppPackage>\n  <Platform>\n</VekAppPackage>\n", "3:1: </VekAppPackage> closes <Platform>"
        )
        self.expect_refused("", "1:1: the document has no root element")
        self.expect_refused("no document", "1:1: text must not stand before the root element")

    def test_a_member_is_read_up_to_its_first_zero_byte(self):
        manifest = unified_manifest("linux_arm7")
        self.host_archive(manifest=manifest + "\0 and what is no document")
        self.check(
            "--archive",
            "sensor.pkg",
            "--manifest",
            "m.xml",
            stdout="Manifest saved at m.xml\n",
            files={"m.xml": manifest},
        )

    def test_a_file_in_an_installation_directory_that_is_no_document(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((1, 2, 3, 4)))
        self.write("tools/vekPackages.xml", "<VekAppPackage>")
        message = located(
            "TaVekUtils_GetUnifiedManifest",
            -74,
            "tools\\vekPackages.xml:1:16: the document ends inside <VekAppPackage>, opened at 1:1",
        )
        self.check("--archive", "tools", "--manifest", "m.xml", stderr=extraction_failed(message), status=1)


class Merging(Manifest):
    def test_a_package_goes_behind_those_that_are_there(self):
        old = app("Old", entry("Resource", "old.dat", "/old.dat"))
        self.merge(
            unified_manifest("linux_arm7", old),
            self.new_package(),
            unified_manifest("linux_arm7", old, app("New", self.own_entry)),
        )

    def test_merging_again_leaves_one_entry_which_is_now_the_last(self):
        old, other = app("New", entry("VekApp", "gone.so", "/gone.so")), app("Other", self.own_entry)
        self.merge(
            unified_manifest("linux_arm7", old, other),
            self.new_package(),
            unified_manifest("linux_arm7", other, app("New", self.own_entry)),
        )

    def test_an_entry_whose_name_begins_the_packages_name_is_dropped(self):
        for dropped in ("abc", "abcdef", "a", ""):
            self.merge(
                unified_manifest("linux_arm7", app(dropped, self.own_entry), app("kept")),
                self.new_package("abcdef"),
                unified_manifest("linux_arm7", app("kept"), app("abcdef", self.own_entry)),
            )

    def test_an_entry_whose_name_is_longer_or_differs_in_letter_case_stays(self):
        stay = [app("abcdefg"), app("Abc"), app("bcd")]
        self.merge(
            unified_manifest("linux_arm7", *stay),
            self.new_package("abcdef"),
            unified_manifest("linux_arm7", *stay, app("abcdef", self.own_entry)),
        )

    def test_only_entries_of_that_element_name_are_dropped(self):
        stay = element("vekapp", {"name": "New"}), element("Other", {"name": "New"})
        self.merge(
            unified_manifest("linux_arm7", *stay),
            self.new_package(),
            unified_manifest("linux_arm7", *stay, app("New", self.own_entry)),
        )

    def test_a_package_without_files_for_the_platform_gets_an_empty_entry(self):
        self.host_archive()
        self.package("pkgs/a", package_manifest("Arm64", platform("linux_arm64", self.own_entry)), ["a.so"])
        self.package("pkgs/b", self.new_package(), ["a.so"])
        after = unified_manifest("linux_arm7", app("Arm64"), app("New", self.own_entry))
        self.check_batch(
            load=["pkgs/a", "pkgs/b"],
            files={"Custom-sensor.pkg": None},
            stdout=processing("sensor.pkg")
            + loaded("linux_arm7", combined("pkgs/b", "a.so"))
            + saving("Custom-sensor.pkg"),
        )
        self.check(
            "--archive",
            "Custom-sensor.pkg",
            "--manifest",
            "m.xml",
            stdout="Manifest saved at m.xml\n",
            files={"m.xml": after},
        )

    def test_every_platform_element_that_begins_with_the_platform_contributes(self):
        one, two = entry("VekApp", "a.so", "/a.so"), entry("Resource", "b.so", "/b.so", name="Data")
        extra = entry("VekApp", "x.so", "/x.so")
        package = package_manifest(
            "New",
            platform("linux_arm7", one),
            platform("linux_arm64", extra),
            platform("linux_arm7x", extra),
            platform("xlinux_arm7", extra),
            platform("linux_arm7", two),
        )
        self.merge(
            None, package, unified_manifest("linux_arm7", app("New", one, extra, two)), files=("a.so", "b.so")
        )

    def test_entries_are_copied_with_all_they_hold(self):
        rich = (
            '<Thing type="VekApp" note="a &amp; b">\n  <Source>a.so</Source>\n  <Destination>/a.so</Destination>\n'
            '  <More deep="yes">\n    <Less/>\n  </More>\n</Thing>\n'
        )
        self.merge(
            None,
            package_manifest("New", platform("linux_arm7", rich)),
            unified_manifest("linux_arm7", app("New", rich)),
        )

    def test_a_manifest_keeps_its_own_layout(self):
        before = (
            "<?xml version='1.0'?>\r\n<!-- ours -->\r\n<VekAppPackage>\r\n\t<BeVersion>6.1.2.57</BeVersion>\r\n"
            "\t<VekApp name='Old'/>\r\n</VekAppPackage>\r\n"
        )
        after = before.replace(
            "</VekAppPackage>",
            '\t<VekApp name="New">\r\n\t\t<File type="VekApp">\r\n\t\t  <Source>a.so</Source>\r\n'
            "\t\t  <Destination>/a.so</Destination>\r\n\t\t</File>\r\n\t</VekApp>\r\n</VekAppPackage>",
        )
        self.merge(before, self.new_package(), after)

    def test_an_installation_directory_gets_the_windows_entries(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        windows, linux = entry("VekApp", "a.dll", "a.dll"), entry("VekApp", "a.so", "/a.so")
        self.package(
            "pkgs/new",
            package_manifest("New", platform("linux_arm7", linux), platform("win", windows)),
            ["a.dll"],
        )
        self.check_batch(
            stock=["tools"],
            load=["pkgs/new"],
            stdout=processing("tools") + copied("a.dll"),
            files={
                "tools/a.dll": "content of a.dll",
                "tools/vekPackages.xml": unified_manifest("win", app("New", windows)),
            },
        )


class Failure(Manifest):
    def test_a_manifest_whose_root_has_another_name(self):
        other = unified_manifest("linux_arm7").replace("VekAppPackage", "Other")
        self.expect_merge_fails(
            other, self.new_package(), located("TaVekUtils_AddPackages", -999, no_element("VekAppPackage"))
        )

    def test_a_package_whose_root_has_another_name(self):
        other = self.new_package().replace("VekAppPackage", "Other")
        self.expect_merge_fails(
            None, other, located("TaVekUtils_AddPackages", -999, no_element("VekAppPackage/VekApp"))
        )

    def test_a_package_name_beyond_127_characters(self):
        self.merge(
            None, self.new_package("n" * 127), unified_manifest("linux_arm7", app("n" * 127, self.own_entry))
        )
        self.expect_merge_fails(
            None,
            self.new_package("n" * 128),
            located("TaVekUtils_AddPackages", -75, attribute_too_long("VekApp", "name", 128)),
        )

    def test_an_entry_without_name_or_with_a_long_one(self):
        nameless = unified_manifest("linux_arm7", element("VekApp"))
        self.expect_merge_fails(
            nameless,
            self.new_package(),
            located("TaVekUtils_AddPackages", -999, no_attribute("VekApp", "name")),
        )
        long = unified_manifest("linux_arm7", app("n" * 128))
        self.expect_merge_fails(
            long,
            self.new_package(),
            located("TaVekUtils_AddPackages", -75, attribute_too_long("VekApp", "name", 128)),
        )

    def test_a_manifest_without_version(self):
        bare = DECLARATION + "<VekAppPackage/>\n"
        self.expect_merge_fails(
            bare,
            self.new_package(),
            located("ArchiveExtended::Version", -999, no_element("BeVersion")),
            progress=False,
        )

    def test_a_version_beyond_127_characters(self):
        long = unified_manifest("linux_arm7", be_version="1" * 128)
        self.expect_merge_fails(
            long,
            self.new_package(),
            located("ArchiveExtended::Version", -75, text_too_long("BeVersion", 128)),
            progress=False,
        )
        self.merge(
            unified_manifest("linux_arm7", be_version="1" * 127),
            self.new_package(),
            unified_manifest("linux_arm7", app("New", self.own_entry), be_version="1" * 127),
        )
