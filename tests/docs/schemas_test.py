"""The schemas accept the samples and the documents' examples, refuse slips, and do not disturb the program."""

import pathlib
import subprocess
import tempfile
import unittest

import markdown
import options
import workplace
from workplace import REPOSITORY

SCHEMAS = REPOSITORY / "schemas"
FILE = "<File type='VekApp'><Source>a.so</Source><Destination>/user/a.so</Destination></File>"


def package(version="*", name="a", platform="win", file=FILE):
    return (
        f"<VekAppPackage><BeVersion>{version}</BeVersion><VekApp name='{name}'>"
        f"<Platform name='{platform}'>{file}</Platform></VekApp></VekAppPackage>"
    )


def manifest(platform="win", file=FILE, name="a"):
    return (
        f"<VekAppPackage><BeVersion>1.0</BeVersion><Platform>{platform}</Platform>"
        f"<VekApp name='{name}'>{file}</VekApp></VekAppPackage>"
    )


def configuration(children):
    return f"<BuildConfig>{children}</BuildConfig>"


def script(children):
    return f"<Startup>{children}</Startup>"


PREFIX = "<OutputPrefix>Custom</OutputPrefix>"
NO_SOURCE = "<File type='VekApp'><Destination>/user/a.so</Destination></File>"
NO_DESTINATION = "<File type='VekApp'><Source>a.so</Source></File>"
NO_TYPE = FILE.replace(" type='VekApp'", "")
OTHER_TYPE = FILE.replace("VekApp", "Library")
NO_EQ_VALUE = "<File name='/a' source='a'><Or><Eq property='Controller'/></Or></File>"

RIGHT = {
    "configuration": [
        configuration(PREFIX),
        configuration("<OutputPrefix>C</OutputPrefix>"),
        configuration("<OutputPrefix>My sensors (2)</OutputPrefix>"),
        configuration("<VekPkgsToLoad/><StockPackages><Path>a.pkg</Path></StockPackages>" + PREFIX),
        configuration(PREFIX + "<VekPkgsToRemove><Name>a</Name><Name>b</Name></VekPkgsToRemove>"),
        configuration(f"<OutputPrefix>{'x' * 255}</OutputPrefix>"),
    ],
    "addon-package": [
        package(),
        package(version="1" * 31, name="n" * 127, file=FILE + FILE.replace("VekApp", "RESOURCE")),
        package(platform="linux_arm7", file=FILE.replace("/user/a.so", "")),
        package(file=""),
    ],
    "unified-manifest": [
        manifest(),
        manifest(file=""),
        "<VekAppPackage><BeVersion/><Platform>ombix</Platform></VekAppPackage>",
    ],
    "startup-script": [
        script("<Version value='1'/><File name='/a' source='a'><Or/></File>"),
        script(
            "text<Reboot when='now'><Deep/></Reboot><File name='/a' source='a' mode='x'><And><Or/></And></File>"
        ),
    ],
}

WRONG = {
    "configuration": [
        configuration(""),
        configuration(PREFIX + PREFIX),
        configuration("<OutputPrefix/>"),
        configuration(f"<OutputPrefix>{'x' * 256}</OutputPrefix>"),
        configuration("<OutputPrefix>out/Custom</OutputPrefix>"),
        configuration("<OutputPrefix>out\\Custom</OutputPrefix>"),
        configuration("<OutputPrefix>\n  Custom\n</OutputPrefix>"),
        configuration("<OutputPrefix> </OutputPrefix>"),
        configuration("<OutputPrefx>Custom</OutputPrefx>"),
        configuration(PREFIX + "<VekPkgsToLoad><Path/></VekPkgsToLoad>"),
        configuration(PREFIX + "<VekPkgsToLoad><Path> a.tar </Path></VekPkgsToLoad>"),
        configuration(PREFIX + f"<StockPackages><Path>{'x' * 512}</Path></StockPackages>"),
        configuration(PREFIX + "<VekPkgsToRemove><Path>a</Path></VekPkgsToRemove>"),
        configuration(PREFIX + "<StockPackage><Path>a</Path></StockPackage>"),
    ],
    "addon-package": [
        package(version=""),
        package(version="1" * 32),
        package(name=""),
        package(name="n" * 128),
        package(platform="Ombix"),
        package(platform="linux_arm"),
        package(file=NO_SOURCE),
        package(file=NO_DESTINATION),
        package(file=NO_TYPE),
        package(file=OTHER_TYPE),
        package(file=FILE.replace("a.so</S", "x" * 512 + "</S")),
        package().replace("</VekApp>", f"<Platform name='win'>{FILE}</Platform></VekApp>"),
        package().replace("VekAppPackage", "Package"),
        package().replace("<BeVersion>*</BeVersion>", ""),
    ],
    "unified-manifest": [
        manifest(platform="all"),
        manifest(file=NO_SOURCE),
        manifest(file=OTHER_TYPE),
        manifest(name="n" * 128),
        package(),
        "<VekAppPackage><BeVersion>1</BeVersion></VekAppPackage>",
    ],
    "startup-script": [
        script("<Version/>"),
        script(f"<Version value='{'1' * 128}'/>"),
        script("<File source='a'/>"),
        script("<File name='/a'/>"),
        script(f"<File name='/{'a' * 255}' source='a'/>"),
        script(NO_EQ_VALUE),
    ],
}


def schema_of(text):
    """The name of the schema for a whole document of the manual, None for other pieces of XML."""
    if "<BuildConfig" in text:
        return "configuration"
    if "<Startup" in text:
        return "startup-script"
    if "<VekAppPackage" in text:
        return "unified-manifest" if "<Platform>" in text else "addon-package"
    return None


class Schemas(unittest.TestCase):
    def verdict(self, schema, path=None, text=None):
        """What xmllint finds; "" when it accepts the document."""
        command = [
            options.tool("xmllint"),
            "--noout",
            "--nonet",
            "--schema",
            SCHEMAS / f"{schema}.xsd",
            path or "-",
        ]
        done = subprocess.run(command, input=text, capture_output=True, text=True, check=False)
        self.assertIn(done.returncode, (0, 3), done.stderr)
        return done.stderr if done.returncode else ""

    def test_samples_are_accepted(self):
        self.assertEqual(self.verdict("configuration", REPOSITORY / "samples/sample_config.xml"), "")
        packages = list((REPOSITORY / "samples").glob("*/vek_manifest.xml"))
        self.assertEqual(len(packages), 2)
        for path in packages:
            self.assertEqual(self.verdict("addon-package", path), "")

    def test_samples_name_their_schemas(self):
        for path in (REPOSITORY / "samples").rglob("*.xml"):
            reference = path.read_text().partition('noNamespaceSchemaLocation="')[2].partition('"')[0]
            self.assertTrue((path.parent / reference).is_file(), path)

    def test_right_documents_are_accepted(self):
        for schema, texts in RIGHT.items():
            for text in texts:
                self.assertEqual(self.verdict(schema, text=text), "", text)

    def test_wrong_documents_are_refused(self):
        for schema, texts in WRONG.items():
            for text in texts:
                self.assertNotEqual(self.verdict(schema, text=text), "", f"{schema} accepts {text}")

    def test_examples_of_the_manual_are_accepted(self):
        checked = 0
        for document in markdown.documents():
            for block in markdown.blocks(document):
                text = "\n".join(block.lines)
                if block.language == "xml" and schema_of(text):
                    self.assertEqual(self.verdict(schema_of(text), text=text), "", f"{document}:{block.line}")
                    checked += 1
        self.assertGreaterEqual(checked, 5)

    def test_the_program_does_not_mind_the_names_of_schemas(self):
        """The same run with and without the attributes that name schemas gives the same bytes everywhere."""
        plain, named = (self.outcome(strip) for strip in (True, False))
        self.assertEqual(plain, named)
        self.assertIn("Custom-module-ombix.pkg", plain[1])

    def outcome(self, strip):
        with tempfile.TemporaryDirectory() as directory:
            root = pathlib.Path(directory)
            environment = workplace.prepare(root, options.program())
            sample = root / "lib/tavekutil/bin/sample_config.xml"
            package_manifest = root / "work/packages/lane-counter/vek_manifest.xml"
            sample.write_text(sample.read_text().replace("lane-counter.tar", "lane-counter"))
            for path in (sample, package_manifest) if strip else ():
                text = path.read_text()
                start, end = text.index(" xmlns:xsi"), text.index(
                    ">", text.index("noNamespaceSchemaLocation")
                )
                path.write_text(text[:start] + text[end:])
            done = subprocess.run(
                ["TaVekUtil", "--config", sample.name],
                cwd=root / "work",
                env=environment,
                capture_output=True,
                check=True,
            )
            outputs = sorted((root / "work").rglob("Custom-*")) + [root / "work/host/vekPackages.xml"]
            return done.stdout, {path.name: path.read_bytes() for path in outputs}


if __name__ == "__main__":
    unittest.main()
