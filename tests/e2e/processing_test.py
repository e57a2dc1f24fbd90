"""Working through the archives of a batch: progress, results, what a failure leaves."""

import os
import shutil
import unittest

from harness import program, zip_builder
from harness.documents import (
    MODELS,
    app,
    configuration,
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
    copied,
    loaded,
    path_too_long,
    processing,
    removing,
    saving,
    unchanged,
)
from harness.patterns import located
from harness.program import ON_WINDOWS, combined
from harness.scenario import EXECUTABLE_PATH, Scenario


class Processing(Scenario):
    arm7 = entry("VekApp", "a.so", "/a.so")

    def setUp(self):
        super().setUp()
        self.package("pkgs/new", package_manifest("New", platform("linux_arm7", self.arm7)), ["a.so"])

    def result(self, name="sensor.pkg", **archive):
        """Writes an archive; answers what it holds once the package is added."""
        return self.with_package(self.host_archive(name, **archive))

    def with_package(self, contents):
        contents.put(
            "script.xml", host_script("linux_arm7", file("/a.so", "data/12345-a.so", *MODELS["linux_arm7"]))
        )
        contents.put("data/12345-a.so", "content of a.so")
        return contents.put("vekPackages.xml", unified_manifest("linux_arm7", app("New", self.arm7)))

    def added(self, archive="sensor.pkg", output="Custom-sensor.pkg"):
        return processing(archive) + loaded("linux_arm7", combined("pkgs/new", "a.so")) + saving(output)


class Progress(Processing):
    def test_the_lines_of_an_archive(self):
        after = self.result()
        self.check_batch(
            load=["pkgs/new"],
            files={"Custom-sensor.pkg": after},
            stdout=(
                "\n"
                "TaVekUtil: Processing Archive: sensor.pkg\n"
                f"TaVekUtil:    - Loaded file for Linux_Arm7 Sensor: {combined('pkgs/new', 'a.so')}\n"
                "TaVekUtil:    - Saving new package as: Custom-sensor.pkg\n"
            ),
        )

    def test_the_lines_of_an_archive_that_stays_as_it_is(self):
        self.host_archive()
        self.check_batch(
            stdout=(
                "\n"
                "TaVekUtil: Processing Archive: sensor.pkg\n"
                "TaVekUtil:    - No libraries were loaded for: sensor.pkg\n"
            )
        )

    def test_the_lines_of_an_installation(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        own = entry("VekApp", "a.dll", "a.dll")
        self.package("pkgs/new", package_manifest("New", platform("win", own)), ["a.dll"])
        self.check_batch(
            stock=["tools"],
            load=["pkgs/new"],
            files={"tools/a.dll": None, "tools/vekPackages.xml": unified_manifest("win", app("New", own))},
            stdout="\nTaVekUtil: Processing Archive: tools\nTaVekUtil:    - Loaded file for Windows: a.dll\n",
        )

    def test_the_lines_of_a_removal(self):
        after = self.host_archive(manifest=unified_manifest("linux_arm7", app("Old")))
        after.put("vekPackages.xml", unified_manifest("linux_arm7"))
        self.check_batch(
            remove=["Old"],
            files={"Custom-sensor.pkg": after},
            stdout=(
                "\nTaVekUtil: Processing Archive: sensor.pkg\n"
                "\n\tTaVekUtil: Remove Package: Old\n"
                "TaVekUtil:    - Saving new package as: Custom-sensor.pkg\n"
            ),
        )

    def test_an_archive_of_a_long_extension(self):
        name = "sensor-6.1.2.57-release-candidate-for-customers"
        after = self.result(name)
        output = "Custom-" + name
        self.check_batch(
            stock=[name], load=["pkgs/new"], files={output: after}, stdout=self.added(name, output)
        )

    def test_errors_stand_among_the_progress_where_they_happened(self):
        self.result("one.pkg")
        self.write(
            "host/bin/win64/cfg.xml", configuration("Custom", ["one.pkg", "missing.pkg"], ["pkgs/new"])
        )
        outcome = program.start(self.program, ["--config", "cfg.xml"], self.root, merged=True)
        self.assertEqual(
            outcome.stdout,
            self.added("one.pkg", "Custom-one.pkg")
            + processing("missing.pkg")
            + "TaVekUtil: Failed injecting files into upgrade package.\n"
            "TaVekUtil: Failed process upgrade package.\n"
            "TaVekUtil: Failed updating upgrade packages using configuration file: cfg.xml"
            " Error: Path not found: missing.pkg\n",
        )


class Results(Processing):
    def test_the_result_lies_beside_the_input(self):
        for directory in ("store", "store/deep", "./store/../store"):
            name, output = f"{directory}/sensor.pkg", combined(directory, "Custom-sensor.pkg")
            after = self.result(name)
            self.check_batch(
                stock=[name],
                load=["pkgs/new"],
                stdout=self.added(name, output),
                files={os.path.normpath(f"{directory}/Custom-sensor.pkg"): after},
            )

    def test_absolute_paths(self):
        after = self.result()
        name = self.path("sensor.pkg")
        self.check_batch(
            stock=[name],
            load=["pkgs/new"],
            files={"Custom-sensor.pkg": after},
            stdout=self.added(name, combined(self.root, "Custom-sensor.pkg")),
        )

    def test_paths_written_on_windows(self):
        after = self.result("store/sensor.pkg")
        self.check_batch(
            stock=["store\\sensor.pkg"],
            load=["pkgs/new"],
            files={"store/Custom-sensor.pkg": after},
            stdout=self.added("store\\sensor.pkg", combined("store", "Custom-sensor.pkg")),
        )

    def test_an_older_result_is_replaced(self):
        after = self.result()
        self.write("Custom-sensor.pkg", "old")
        self.check_batch(load=["pkgs/new"], stdout=self.added(), files={"Custom-sensor.pkg": after})

    def test_the_same_run_gives_the_same_bytes(self):
        self.result()
        self.check_batch(load=["pkgs/new"], stdout=self.added(), files={"Custom-sensor.pkg": None})
        first = self.read("Custom-sensor.pkg")
        os.remove(self.path("Custom-sensor.pkg"))
        self.check_batch(load=["pkgs/new"], stdout=self.added(), files={"Custom-sensor.pkg": first})

    def test_an_archive_listed_twice_is_processed_twice(self):
        after = self.result()
        self.check_batch(
            stock=["sensor.pkg"] * 2,
            load=["pkgs/new"],
            stdout=self.added() * 2,
            files={"Custom-sensor.pkg": after},
        )

    def test_a_result_fed_in_again_stays_the_same(self):
        self.result()
        self.check_batch(load=["pkgs/new"], stdout=self.added(), files={"Custom-sensor.pkg": None})
        again = self.added("Custom-sensor.pkg", "Custom-Custom-sensor.pkg")
        self.check_batch(
            stock=["Custom-sensor.pkg"],
            load=["pkgs/new"],
            stdout=again,
            files={"Custom-Custom-sensor.pkg": self.read("Custom-sensor.pkg")},
        )

    def test_adding_and_then_removing_a_package_gives_the_script_back(self):
        contents = self.host_archive()
        self.check_batch(load=["pkgs/new"], stdout=self.added(), files={"Custom-sensor.pkg": None})
        contents.put("script.xml", host_script()).put("vekPackages.xml", unified_manifest("linux_arm7"))
        self.check_batch(
            stock=["Custom-sensor.pkg"],
            remove=["New"],
            files={"Custom-Custom-sensor.pkg": contents},
            stdout=processing("Custom-sensor.pkg") + removing("New") + saving("Custom-Custom-sensor.pkg"),
        )

    def test_all_platforms_in_one_run(self):
        entries = {key: entry("VekApp", f"{key}.so", f"/{key}.so") for key in MODELS} | {
            "win": entry("VekApp", "a.dll", "a.dll")
        }
        sources = [f"{key}.so" for key in MODELS] + ["a.dll"]
        self.package(
            "pkgs/new", package_manifest("New", *[platform(*item) for item in entries.items()]), sources
        )
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        files, progress = {}, ""
        for key, models in MODELS.items():
            after = self.host_archive(key + ".pkg", key)
            after.put("script.xml", host_script(key, file(f"/{key}.so", f"data/12345-{key}.so", *models)))
            after.put(f"data/12345-{key}.so", f"content of {key}.so")
            after.put("vekPackages.xml", unified_manifest(key, app("New", entries[key])))
            files[f"Custom-{key}.pkg"] = after
            progress += (
                processing(key + ".pkg")
                + loaded(key, combined("pkgs/new", f"{key}.so"))
                + saving(f"Custom-{key}.pkg")
            )
        files["tools/a.dll"] = "content of a.dll"
        files["tools/vekPackages.xml"] = unified_manifest("win", app("New", entries["win"]))
        stock = [key + ".pkg" for key in MODELS] + ["tools"]
        self.check_batch(
            stock=stock,
            load=["pkgs/new"],
            stdout=progress + processing("tools") + copied("a.dll"),
            files=files,
        )

    def test_the_manifest_of_an_installation_whose_path_ends_in_a_separator(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        own = entry("VekApp", "a.dll", "a.dll")
        self.package("pkgs/new", package_manifest("New", platform("win", own)), ["a.dll"])
        for tools in ("tools/", "tools\\"):
            self.check_batch(
                stock=[tools],
                load=["pkgs/new"],
                stdout=processing(tools) + copied("a.dll"),
                files={
                    "tools/a.dll": None,
                    "tools/vekPackages.xml": unified_manifest("win", app("New", own)),
                },
            )

    @unittest.skipIf(ON_WINDOWS, "no modes or links there")
    def test_the_permissions_of_an_older_result_stay_and_a_link_is_followed(self):
        after = self.result()
        self.write("store/result.pkg", "old")
        os.chmod(self.path("store/result.pkg"), 0o600)
        os.symlink("store/result.pkg", self.path("Custom-sensor.pkg"))
        self.check_batch(load=["pkgs/new"], stdout=self.added(), files={"store/result.pkg": after})


class Failure(Processing):
    def test_the_first_failure_ends_the_batch_and_earlier_results_stay(self):
        after = self.result("one.pkg")
        self.archive("two.pkg", "<Startup/>")
        self.write("three.pkg", "never opened")
        self.check_batch(
            stock=["one.pkg", "two.pkg", "three.pkg"],
            load=["pkgs/new"],
            files={"Custom-one.pkg": after},
            stdout=self.added("one.pkg", "Custom-one.pkg") + processing("two.pkg"),
            stderr=archive_failed("Could not determine platform"),
            status=1,
        )

    def expect_save_fails(self, status, detail, progress="", line=983, stock="sensor.pkg", **options):
        message = located("TaVekUtil_ModifyVekPkgs", status, detail, line)
        self.check_batch(
            stock=[stock],
            load=["pkgs/new"],
            stderr=archive_failed(message),
            status=1,
            stdout=processing(stock) + (progress or loaded("linux_arm7", combined("pkgs/new", "a.so"))),
            **options,
        )

    def test_a_directory_in_place_of_the_result(self):
        self.result()
        os.mkdir(self.path("Custom-sensor.pkg"))
        self.expect_save_fails(-5, "Custom-sensor.pkg: Is a directory")

    @unittest.skipIf(ON_WINDOWS, "no links there")
    def test_a_link_to_the_archive_in_place_of_the_result(self):
        self.result("store/sensor.pkg")
        os.symlink("store/sensor.pkg", self.path("sensor.pkg"))
        os.symlink("sensor.pkg", self.path("Custom-sensor.pkg"))
        self.expect_save_fails(-22, "Custom-sensor.pkg: that is the archive itself")

    def test_an_output_path_that_is_too_long(self):
        directory = "d/" * 250
        self.result(directory + "s.pkg")
        self.expect_save_fails(
            -75, path_too_long(combined(directory[:-1], "Custom-s.pkg")), line=982, stock=directory + "s.pkg"
        )

    @unittest.skipIf(ON_WINDOWS, "systems differ in what they answer")
    def test_an_output_name_that_the_system_does_not_take(self):
        self.result()
        name = "n" * 250 + "-sensor.pkg"
        self.expect_save_fails(-5, name + ": File name too long", prefix="n" * 250)

    def test_a_damaged_member_is_never_saved_on_as_a_good_one(self):
        for method in (zip_builder.STORED, zip_builder.DEFLATED):
            self.result(members=[zip_builder.Member("host/bad", b"damaged" * 9, method, crc=7)])
            self.expect_save_fails(-74, "sensor.pkg: member host/bad: checksum mismatch")

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_directory_that_may_not_be_written(self):
        self.result()
        self.expect_save_fails(-5, "Custom-sensor.pkg: Permission denied", unprivileged=True)

    @unittest.skipIf(ON_WINDOWS, "no such limit there")
    def test_a_full_disk_leaves_the_old_result(self):
        self.result(members=[zip_builder.Member("host/big", os.urandom(20000))])
        self.write("Custom-sensor.pkg", "old")
        self.expect_save_fails(-5, "Custom-sensor.pkg: File too large", file_size=10000)

    @unittest.skipIf(ON_WINDOWS, "no such file system there")
    def test_a_disk_that_is_full(self):
        self.result(members=[zip_builder.Member("host/big", os.urandom(200000))])
        os.mkdir(self.path("disk"))
        if (
            os.getuid() != 0
            or os.system(f"mount -t tmpfs -o size=256k tmpfs '{self.path('disk')}' 2>/dev/null") != 0
        ):
            self.skipTest("no right to mount a small file system")
        self.addCleanup(os.system, f"umount '{self.path('disk')}'")
        self.foreseeable = False
        shutil.move(self.path("pkgs"), self.path("disk/pkgs"))
        self.write("disk/sensor.pkg", self.read("sensor.pkg"))
        message = located(
            "TaVekUtil_ModifyVekPkgs", -5, "disk/Custom-sensor.pkg: No space left on device", 983
        )
        self.check_batch(
            stock=["disk/sensor.pkg"],
            load=["disk/pkgs/new"],
            stderr=archive_failed(message),
            status=1,
            stdout=processing("disk/sensor.pkg") + loaded("linux_arm7", combined("disk/pkgs/new", "a.so")),
        )

    def test_a_directory_in_place_of_an_installations_manifest(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        os.mkdir(self.path("tools/vekPackages.xml"))
        message = located("TaVekUtils_GetUnifiedManifest", -5, "tools\\vekPackages.xml: Is a directory")
        self.check_batch(
            stock=["tools"], stdout=processing("tools"), stderr=archive_failed(message), status=1
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_an_installations_manifest_that_may_not_be_written(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        self.package(
            "pkgs/new",
            package_manifest("New", platform("win", entry("VekApp", "a.dll", "sub/a.dll"))),
            ["a.dll"],
        )
        os.makedirs(self.path("tools/sub"))
        os.chmod(self.path("tools/sub"), 0o777)
        detail = "tools\\vekPackages.xml: Permission denied"
        self.expect_save_fails(
            -5, detail, copied("sub/a.dll"), 989, "tools", unprivileged=True, files={"tools/sub/a.dll": None}
        )

    def test_a_package_for_windows_alone_does_not_change_a_sensor_archive(self):
        self.host_archive()
        self.package(
            "pkgs/new",
            package_manifest(
                "New", platform("win", entry("VekApp", "a.dll", "a.dll")), platform("linux_arm7", self.arm7)
            ),
            ["a.so", "a.dll"],
        )
        self.check_batch("win", load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg"))
