"""Where a file goes whose package names no destination."""

from harness.documents import app, entry, file, host_script, package_manifest, platform, unified_manifest
from harness.executable import executable
from harness.messages import archive_failed, loaded, processing, removing, saving, unchanged
from harness.program import combined
from harness.scenario import EXECUTABLE_PATH, Scenario

MODELS = {"linux_arm7": ("R2", "R4", "R4-mc"), "linux_arm64": ("R6", "R8")}
NOT_ESTABLISHED = "cannot be established (status -984)"
NOT_ON_WINDOWS = "Default Destination for Windows Platform is Not Supported"


class Adding(Scenario):
    def test_sensors_take_the_file_name_under_user(self):
        for key, models in MODELS.items():
            package_file = entry("VekApp", "lib/libfoo.so", "")
            after = self.host_archive("sensor.pkg", key)
            self.package("pkgs/new", package_manifest("New", platform(key, package_file)), ["lib/libfoo.so"])
            after.put(
                "script.xml", host_script(key, file("/user/libfoo.so", "data/12345-libfoo.so", *models))
            )
            after.put("data/12345-libfoo.so", "content of lib/libfoo.so")
            after.put("vekPackages.xml", unified_manifest(key, app("New", package_file)))
            self.check_batch(
                load=["pkgs/new"],
                files={"Custom-sensor.pkg": after},
                stdout=processing("sensor.pkg")
                + loaded(key, combined("pkgs/new", "lib/libfoo.so"))
                + saving("Custom-sensor.pkg"),
            )

    def expect_none(self, archive, key, message):
        self.package(
            "pkgs/new",
            package_manifest("New", platform(key, entry("VekApp", "libfoo.so", ""))),
            ["libfoo.so"],
        )
        self.check_batch(
            stock=[archive],
            load=["pkgs/new"],
            stdout=processing(archive),
            stderr=archive_failed(message),
            status=1,
        )

    def test_ombix_modules_have_none(self):
        self.host_archive("sensor.pkg", "ombix")
        self.expect_none("sensor.pkg", "ombix", NOT_ESTABLISHED)

    def test_windows_has_none(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((1, 2, 3, 4)))
        self.expect_none("tools", "win", NOT_ON_WINDOWS)

    def test_a_platform_that_only_begins_with_a_sensor_platform_has_none(self):
        self.host_archive()
        self.expect_none("sensor.pkg", "linux_arm7x", NOT_ESTABLISHED)

    def test_a_platform_in_capitals_is_none_of_them(self):
        self.host_archive()
        self.package(
            "pkgs/new", package_manifest("New", platform("LINUX_ARM7", entry("VekApp", "a.so", ""))), ["a.so"]
        )
        self.check_batch(load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg"))


class Removing(Scenario):
    def test_sensors_take_the_package_name_under_user(self):
        for key, models in MODELS.items():
            manifest = unified_manifest(key, app("Alpha", entry("VekApp", "libfoo.so", "")))
            by_package, by_file = file("/user/Alpha", "host/lib.so", *models), file(
                "/user/libfoo.so", "host/app", *models
            )
            after = self.host_archive("sensor.pkg", key, by_file, by_package, manifest=manifest)
            after.delete("host/lib.so").put("script.xml", host_script(key, by_file))
            after.put("vekPackages.xml", unified_manifest(key))
            self.check_batch(
                remove=["Alpha"],
                files={"Custom-sensor.pkg": after},
                stdout=processing("sensor.pkg") + removing("Alpha") + saving("Custom-sensor.pkg"),
            )

    def test_ombix_modules_have_none(self):
        manifest = unified_manifest("ombix", app("Alpha", entry("VekApp", "libfoo.so", "")))
        self.host_archive("sensor.pkg", "ombix", manifest=manifest)
        self.check_batch(
            remove=["Alpha"],
            stdout=processing("sensor.pkg") + removing("Alpha"),
            stderr=archive_failed(NOT_ESTABLISHED),
            status=1,
        )

    def test_windows_has_none(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((1, 2, 3, 4)))
        self.write(
            "tools/vekPackages.xml", unified_manifest("win", app("Alpha", entry("VekApp", "a.dll", "")))
        )
        self.check_batch(
            stock=["tools"],
            remove=["Alpha"],
            stdout=processing("tools") + removing("Alpha"),
            stderr=archive_failed(NOT_ON_WINDOWS),
            status=1,
        )
