"""The configuration file: what it must and may hold."""

from harness.documents import DECLARATION, configuration, element, entry, package_manifest, platform
from harness.messages import (
    CONFIGURATION_FAILED,
    batch_failed,
    loaded,
    no_element,
    processing,
    saving,
    text_too_long,
    unchanged,
)
from harness.patterns import located
from harness.program import combined, native
from harness.scenario import Scenario


class Configuration(Scenario):
    def setUp(self):
        super().setUp()
        self.host_archive("sensor.pkg")

    def run_with(self, text, stdout="", files=None, stderr="", status=0):
        self.write("host/bin/win64/cfg.xml", text)
        self.check("--config", "cfg.xml", stdout=stdout, stderr=stderr, status=status, files=files)

    def expect_failed(self, text, status, detail):
        message = located("TaVekUtil_Load_Config", status, detail)
        self.run_with(text, stderr=CONFIGURATION_FAILED + batch_failed(message), status=1)

    def expect_archives(self, text, *archives):
        self.run_with(text, "".join(processing(archive) + unchanged(archive) for archive in archives))

    def saving_package(self):
        """A package that fits any archive; adding it shows under which name the result is saved."""
        self.package(
            "pkgs/new",
            package_manifest("New", platform("linux_arm7", entry("VekApp", "a.so", "/a"))),
            ["a.so"],
        )
        return processing("sensor.pkg") + loaded("linux_arm7", combined("pkgs/new", "a.so"))


class Elements(Configuration):
    def test_the_archives_in_order_and_as_written(self):
        self.host_archive("b/second one.pkg")
        self.host_archive("größe.pkg")
        self.expect_archives(
            configuration(stock=["größe.pkg", "./sensor.pkg", "b/../b/second one.pkg", "sensor.pkg"]),
            "größe.pkg",
            "./sensor.pkg",
            "b/../b/second one.pkg",
            "sensor.pkg",
        )

    def test_names_of_the_root_and_of_list_entries_do_not_matter(self):
        text = (
            "<anything><OutputPrefix>C</OutputPrefix><StockPackages><x>sensor.pkg</x><StockPackages y='z'>./sensor.pkg"
            "</StockPackages></StockPackages></anything>"
        )
        self.expect_archives(text, "sensor.pkg", "./sensor.pkg")

    def test_other_elements_and_attributes_are_ignored(self):
        text = configuration(stock=["sensor.pkg"]).replace(
            "<StockPackages>", "<Note on='x'/><StockPackages platform='win'>"
        )
        self.expect_archives(text, "sensor.pkg")

    def test_of_two_elements_of_one_name_the_first_counts(self):
        text = configuration(stock=["sensor.pkg"]).replace(
            "</BuildConfig>", "<StockPackages><Path>other.pkg</Path></StockPackages></BuildConfig>"
        )
        self.expect_archives(text, "sensor.pkg")

    def test_names_are_matched_with_their_letter_case(self):
        text = configuration(stock=["sensor.pkg"], remove=["Alpha"]).replace(
            "VekPkgsToRemove", "vekpkgstoremove"
        )
        self.expect_archives(text, "sensor.pkg")
        self.expect_failed(
            configuration(stock=["sensor.pkg"]).replace("OutputPrefix", "outputPrefix"),
            -999,
            no_element("OutputPrefix"),
        )

    def test_empty_archive_entries_are_skipped(self):
        self.expect_archives(configuration(stock=["", "sensor.pkg", "", " \t"]), "sensor.pkg")

    def test_text_is_what_xml_makes_of_it(self):
        self.host_archive("a & b.pkg")
        text = configuration(stock=["X"])
        for written in (
            "a &amp; b.pkg",
            "<![CDATA[a & b.pkg]]>",
            "a &#38;<!-- note --> b.pkg",
            "a<?x?> &#x26; b.pkg",
        ):
            self.expect_archives(text.replace("X", written), "a & b.pkg")

    def test_text_keeps_its_white_space(self):
        self.host_archive(" sensor.pkg")
        self.expect_archives(configuration(stock=[" sensor.pkg"]), " sensor.pkg")

    def test_other_encodings(self):
        self.host_archive("größe.pkg")
        text = configuration(stock=["größe.pkg"])
        for encoding, name in (
            ("UTF-16", "utf-16"),
            ("ISO-8859-1", "latin-1"),
            ("windows-1252", "cp1252"),
            ("utf-8", "utf-8"),
        ):
            self.expect_archives(text.replace("UTF-8", encoding).encode(name), "größe.pkg")


class Prefix(Configuration):
    def expect_saved_as(self, prefix, name, printed=None):
        progress = self.saving_package()
        self.run_with(
            configuration(prefix, ["sensor.pkg"], ["pkgs/new"]),
            progress + saving(printed or name),
            files={name: None},
        )

    def test_it_stands_before_the_name_with_a_hyphen(self):
        self.expect_saved_as("Custom", "Custom-sensor.pkg")
        self.expect_saved_as("größe & co", "größe & co-sensor.pkg")

    def test_an_empty_one_leaves_the_hyphen(self):
        self.expect_saved_as("", "-sensor.pkg")

    def test_one_that_names_a_directory(self):
        self.expect_saved_as("pkgs/Custom", "pkgs/Custom-sensor.pkg")

    def test_percent_signs_are_just_that(self):
        self.expect_saved_as("%s%n%d", "%s%n%d-sensor.pkg")

    def test_up_to_255_characters(self):
        self.expect_saved_as("./" * 124 + "Custom", "Custom-sensor.pkg", "./" * 124 + "Custom-sensor.pkg")
        self.expect_failed(configuration("x" * 256, ["sensor.pkg"]), -75, text_too_long("OutputPrefix", 256))

    def test_it_must_be_there(self):
        self.expect_failed(
            configuration(None, ["sensor.pkg"], ["pkgs/new"], ["Alpha"]), -999, no_element("OutputPrefix")
        )


class Lengths(Configuration):
    def test_a_path_has_up_to_511_characters(self):
        path = "./" * 250 + "/sensor.pkg"
        self.assertEqual(len(path), 511)
        self.expect_archives(configuration(stock=[path]), path)

    def test_a_longer_text_in_any_list_fails(self):
        for lists in (
            {"stock": ["x" * 512]},
            {"stock": ["sensor.pkg", "x" * 512]},
            {"stock": ["sensor.pkg"], "load": ["x" * 512]},
            {"stock": ["sensor.pkg"], "remove": ["x" * 512]},
            {"stock": ["sensor.pkg"], "load": ["pkgs/new", "x" * 512]},
        ):
            self.expect_failed(configuration(**lists), -75, text_too_long("Path", 512))

    def test_the_length_counts_bytes(self):
        self.expect_failed(configuration(stock=["ö" * 256]), -75, text_too_long("Path", 512))


class Document(Configuration):
    def expect_malformed(self, text, detail, status=-74):
        path = self.path("host/bin/win64/cfg.xml")
        message = located("TaVekUtil_Run", status, native(path) + ":" + detail, 1268)
        self.run_with(text, stderr=batch_failed(message), status=1)

    def test_a_file_that_is_no_document(self):
        self.expect_malformed("", "1:1: the document has no root element")
        self.expect_malformed("plain text", "1:1: text must not stand before the root element")
        self.expect_malformed(DECLARATION, "2:1: the document has no root element")
        self.expect_malformed("<a>\n  <b></c>\n</a>", "2:6: </c> closes <b>")
        self.expect_malformed("<a>\n", "2:1: the document ends inside <a>, opened at 1:1")
        self.expect_malformed(
            configuration(stock=["sensor.pkg"]).replace("sensor.pkg", "&file;"),
            "5:11: the entity &file; is not known",
        )
        self.expect_malformed(
            configuration(stock=["sensor.pkg"]) + element("Second"),
            "8:1: <Second> must not stand behind the root element",
        )

    def test_an_encoding_that_is_not_read(self):
        self.expect_malformed(
            configuration().replace("UTF-8", "Shift_JIS"),
            '1:31: the encoding "Shift_JIS" is not supported',
            -95,
        )
