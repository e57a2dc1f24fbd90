"""The entries of the start-up script: adding, replacing, removing."""

from harness import zip_builder
from harness.documents import (
    ARM7_MODELS,
    app,
    element,
    entry,
    file,
    host_script,
    script,
    unified_manifest,
    version,
)
from harness.messages import (
    UPGRADE_FAILED,
    archive_failed,
    attribute_too_long,
    injection_failed,
    no_attribute,
    no_element,
    no_member,
    processing,
    removal_failed,
    removing,
    saving,
)
from harness.patterns import located
from harness.scenario import Scenario

INSTALLED = "vekappplugin.zext"
MEMBER = "data/12345-vekappplugin.zext"
NEW = file(INSTALLED, MEMBER, *ARM7_MODELS)


class Adding(Scenario):
    """plugin.zext is put into an archive whose script holds `before`; the script must then read `after`."""

    def setUp(self):
        super().setUp()
        self.write("plugin.zext", "new")

    def expect_script(self, before, after, gone=(), members=()):
        held = [zip_builder.Member(name, b"old " + name.encode()) for name in members]
        contents = self.archive("sensor.pkg", before, members=held)
        for name in gone:
            contents.delete(name)
        contents.put("script.xml", after).put(MEMBER, "new")
        self.check("--file", "plugin.zext", "--archive", "sensor.pkg", files={"sensor.pkg": contents})

    def expect_entries(self, before, after, **members):
        self.expect_script(script(*before), script(*after), **members)

    def expect_refused(self, text, message):
        self.archive("sensor.pkg", text)
        self.check(
            "--file",
            "plugin.zext",
            "--archive",
            "sensor.pkg",
            status=1,
            stderr=UPGRADE_FAILED + injection_failed(message),
        )


class NewEntry(Adding):
    def test_it_is_the_last_child_of_the_root(self):
        first, last = file("/a", "a", "R2"), element("Reboot", {"when": "after"})
        self.expect_entries([first, last], [first, last, NEW])

    def test_the_script_keeps_its_own_layout(self):
        before = (
            '<?xml version="1.0"?>\r\n<!-- start-up -->\r\n<Startup  on="sensor" >\r\n\t<File name=\'/a\' source="a" />'
            " <!-- host --><?note?>\r\n\t<Version\r\n\t\tvalue='1'></Version>\r\n</Startup>\r\n<!-- end -->\r\n"
        )
        lines = NEW.replace("  ", "\t").splitlines()
        added = "".join("\t" + line + "\r\n" for line in lines)
        self.expect_script(before, before.replace("</Startup>", added + "</Startup>"))

    def test_a_script_without_declaration_keeps_its_own_layout(self):
        before = "<Startup>\n\t<File name='/a' source='a'/>\n</Startup>\n"
        added = "".join("\t" + line + "\n" for line in NEW.replace("  ", "\t").splitlines())
        for head in ("", "<?xml version='1.0'?>"):
            after = before.replace("</Startup>", added + "</Startup>")
            self.expect_script(head + before, head + after)

    def test_a_script_on_one_line_stays_on_one_line(self):
        before = '<S><File name="/a" source="a"/></S>'
        flat = "".join(line.strip() for line in NEW.splitlines())
        self.expect_script(before, before.replace("</S>", flat + "</S>"))

    def test_a_script_in_another_encoding_stays_in_it(self):
        for encoding, name in (
            ("ISO-8859-1", "iso-8859-1"),
            ("Windows-1252", "cp1252"),
            ("UTF-16", "utf-16"),
        ):
            before = script(file("/größe", "a", "R2")).replace("UTF-8", encoding)
            after = script(file("/größe", "a", "R2"), NEW).replace("UTF-8", encoding)
            self.expect_script(before.encode(name), after.encode(name))

    def test_a_byte_order_mark_stays(self):
        before, after = script(file("/a", "a")), script(file("/a", "a"), NEW)
        self.expect_script(before.encode("utf-8-sig"), after.encode("utf-8-sig"))

    def test_a_name_beyond_the_scripts_encoding_becomes_references(self):
        self.write("größe€.zext", "new")
        contents = self.archive(
            "sensor.pkg", script(file("/a", "a")).replace("UTF-8", "ISO-8859-1").encode("latin-1")
        )
        name = "vekappgröße€.zext"
        added = file(name, "data/12345-" + name, *ARM7_MODELS)
        after = script(file("/a", "a"), added).replace("UTF-8", "ISO-8859-1")
        contents.put("script.xml", after.encode("latin-1", "xmlcharrefreplace"))
        contents.put("data/12345-" + name, "new")
        self.check("--file", "größe€.zext", "--archive", "sensor.pkg", files={"sensor.pkg": contents})


class OlderEntries(Adding):
    first = file("/a", "a", "R2")

    def test_an_entry_of_the_same_name_goes_with_its_member(self):
        old = file(INSTALLED, "data/old", "R2")
        self.expect_entries(
            [old, self.first], [self.first, NEW], gone=["data/old"], members=["data/old", "data/x"]
        )

    def test_all_of_them_go(self):
        old = [file(INSTALLED, f"data/{number}", "R2") for number in range(3)]
        self.expect_entries(
            [old[0], self.first, old[1], old[2]],
            [self.first, NEW],
            members=["data/0", "data/1", "data/2"],
            gone=["data/0", "data/1", "data/2"],
        )

    def test_letter_case_does_not_matter(self):
        old = file("VekAppPLUGIN.Zext", "data/old", "R2")
        self.expect_entries([old, self.first], [self.first, NEW], gone=["data/old"], members=["data/old"])

    def test_a_stale_entry_whose_member_is_gone_is_just_removed(self):
        self.expect_entries([self.first, file(INSTALLED, "data/gone", "R2")], [self.first, NEW])

    def test_the_member_of_an_entry_is_named_with_its_letter_case(self):
        old = file(INSTALLED, "DATA/old", "R2")
        self.expect_entries([self.first, old], [self.first, NEW], members=["data/old"])

    def test_elements_before_the_first_file_are_not_looked_at(self):
        before = element("Alias", {"name": INSTALLED, "source": "data/old"})
        self.expect_entries([before, self.first], [before, self.first, NEW], members=["data/old"])

    def test_an_element_of_another_name_behind_it_goes_as_well(self):
        alias = element("Alias", {"name": INSTALLED, "source": "data/old"})
        self.expect_entries([self.first, alias], [self.first, NEW], gone=["data/old"], members=["data/old"])

    def test_entries_further_inside_stay(self):
        group = element("Group", None, [file(INSTALLED, "data/old", "R2")])
        self.expect_entries([self.first, group], [self.first, group, NEW], members=["data/old"])

    def test_entries_that_cannot_be_read_stay(self):
        odd = [
            element("File", {"source": "data/old"}),
            element("File", {"name": INSTALLED}),
            element("File", {"name": INSTALLED, "source": "s" * 512}),
            element("File", {"name": "n" * 512}),
        ]
        self.expect_entries(odd, odd + [NEW], members=["data/old"])

    def test_attributes_of_511_characters_are_read(self):
        source = "s" * 511
        self.expect_entries(
            [self.first, file(INSTALLED, source)], [self.first, NEW], gone=[source], members=[source]
        )

    def test_comments_beside_a_removed_entry_stay(self):
        before = script("<!-- ours -->\n", file(INSTALLED, "data/old"), "<!-- theirs -->\n", self.first)
        self.expect_script(before, script("<!-- ours -->\n", "<!-- theirs -->\n", self.first, NEW))


class Failure(Adding):
    def test_a_script_without_any_file_entry(self):
        message = located("TaVekUtil_DeletePreviousFiles", -999, no_element("File"))
        for entries in ((), (version("1"),), (element("file", {"name": "/a"}),)):
            self.expect_refused(script(*entries), message)

    def test_a_script_that_is_no_document(self):
        for text, detail in (
            ("", "1:1: the document has no root element"),
            ("R2", "1:1: text must not stand before the root element"),
            ("<S>\n<File>\n</S>", "3:1: </S> closes <File>"),
            ("<S/>\n<S/>", "2:1: <S> must not stand behind the root element"),
            ("<S a='1' a='2'/>", '1:10: the attribute "a" appears twice'),
            ("<S>&nbsp;</S>", "1:4: the entity &nbsp; is not known"),
            (b"<S>\xff</S>", "1:4: the bytes are no UTF-8"),
        ):
            self.expect_refused(text, located("TaVekUtil_InjectFile", -74, "script.xml:" + detail))

    def test_a_script_in_an_encoding_that_is_not_read(self):
        text = script(file("/a", "a")).replace("UTF-8", "EBCDIC-CP-BE")
        self.expect_refused(
            text,
            located(
                "TaVekUtil_InjectFile", -95, 'script.xml:1:31: the encoding "EBCDIC-CP-BE" is not supported'
            ),
        )

    def test_no_script(self):
        self.archive("sensor.pkg")
        self.check(
            "--file",
            "plugin.zext",
            "--archive",
            "sensor.pkg",
            status=1,
            stderr=UPGRADE_FAILED
            + injection_failed(located("TaVekUtil_InjectFile", -999, no_member("script.xml"))),
        )


class Removing(Scenario):
    """A package whose only file is installed as /a is removed from an archive."""

    manifest = unified_manifest("linux_arm7", app("Alpha", entry("VekApp", "a", "/a")))

    def expect_entries(self, before, after, gone=(), members=()):
        held = [zip_builder.Member(name, b"old " + name.encode()) for name in members]
        contents = self.host_archive(
            "sensor.pkg", "linux_arm7", *before, manifest=self.manifest, members=held
        )
        for name in gone:
            contents.delete(name)
        contents.put("script.xml", host_script("linux_arm7", *after)).put(
            "vekPackages.xml", unified_manifest("linux_arm7")
        )
        self.check_batch(
            remove=["Alpha"],
            files={"Custom-sensor.pkg": contents},
            stdout=processing("sensor.pkg") + removing("Alpha") + saving("Custom-sensor.pkg"),
        )

    def expect_refused(self, message, *entries, members=()):
        held = [zip_builder.Member(name, b"old") for name in members]
        self.host_archive("sensor.pkg", "linux_arm7", *entries, manifest=self.manifest, members=held)
        self.check_batch(
            remove=["Alpha"],
            stdout=processing("sensor.pkg") + removing("Alpha"),
            stderr=removal_failed("/a") + archive_failed(message),
            status=1,
        )

    def test_the_entry_goes_with_its_member(self):
        self.expect_entries([file("/a", "data/a", "R2")], [], gone=["data/a"], members=["data/a", "data/b"])

    def test_only_the_first_match_goes(self):
        one, two = file("/a", "data/1", "R2"), file("/a", "data/2", "R2")
        self.expect_entries([one, two], [two], gone=["data/1"], members=["data/1", "data/2"])

    def test_letter_case_matters(self):
        other = file("/A", "data/a", "R2")
        self.expect_entries([other], [other], members=["data/a"])

    def test_only_file_elements_count(self):
        others = [
            element("Alias", {"name": "/a", "source": "data/a"}),
            element("file", {"name": "/a", "source": "data/a"}),
        ]
        self.expect_entries(others, others, members=["data/a"])

    def test_without_a_match_the_script_is_written_all_the_same(self):
        self.expect_entries([], [])

    def test_file_entries_before_the_match_must_have_a_readable_name(self):
        message = located("TaVekUtils_ScriptXmlRemoveAndGetSource", -999, no_attribute("File", "name"))
        self.expect_refused(message, element("File", {"source": "data/a"}), file("/a", "data/a"))
        message = located(
            "TaVekUtils_ScriptXmlRemoveAndGetSource", -75, attribute_too_long("File", "name", 256)
        )
        self.expect_refused(message, file("n" * 256, "data/a"), file("/a", "data/a"))

    def test_those_behind_it_need_not(self):
        odd = element("File", {"source": "data/a"})
        self.expect_entries(
            [file("n" * 255, "x"), file("/a", "data/a"), odd],
            [file("n" * 255, "x"), odd],
            gone=["data/a"],
            members=["data/a"],
        )

    def test_the_match_must_have_a_readable_source(self):
        operation = "TaVekUtils_ScriptXmlRemoveAndGetSource"
        self.expect_refused(
            located(operation, -999, no_attribute("File", "source")), element("File", {"name": "/a"})
        )
        self.expect_refused(
            located(operation, -75, attribute_too_long("File", "source", 256)),
            file("/a", "s" * 256),
            members=["s" * 256],
        )
        self.expect_entries([file("/a", "s" * 255)], [], gone=["s" * 255], members=["s" * 255])

    def test_a_script_that_is_no_document(self):
        self.archive("sensor.pkg", "no document, but R2", self.manifest)
        message = located(
            "TaVekUtils_ScriptXmlRemoveAndGetSource",
            -74,
            "script.xml:1:1: text must not stand before the root element",
        )
        self.check_batch(
            remove=["Alpha"],
            stdout=processing("sensor.pkg") + removing("Alpha"),
            stderr=removal_failed("/a") + archive_failed(message),
            status=1,
        )
