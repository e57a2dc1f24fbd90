"""Random cases: a disk, and the words of one command line. Names come from small pools, so that they meet."""

import random
import struct
import tarfile
import io
import os
import zlib
from dataclasses import dataclass, field

from harness.executable import executable
from harness.zip_builder import BZIP2, DEFLATED, HAS_DESCRIPTOR, STORED, Member, build

from generate_documents import MODELS, document, listing, package_file, script_file

FILES = ["libedge.so", "libEdge.so", "plugin.zext", "tool.dll", "a b.so", "größe.so", "x", "data.bin", "-v"]
SOURCES = FILES + ["arm/" + FILES[0], "arm64\\libedge.so", "win/" + FILES[3], "res/data.bin"]
DESTINATIONS = [
    "/user/libedge.so",
    "/USER/libedge.so",
    "/app/größe.so",
    "/user/x",
    "/app/host",
    "&<odd>\"'",
    "",
]
WIN_DESTINATIONS = [
    "libedge.so",
    "bin\\addon.dll",
    "bin/win64/tool.dll",
    "new/sub/data.bin",
    "\\plugins\\x",
    "no/x",
    "",
]
NAMES = ["abc", "abcdef", "abcd", "Tools", "tools", "Edge Detector", "größe", ""]
VERSIONS = ["6.1.2.57", "6.1.2.57", "6.1.2.57", "6.2-RC", "6.2-rc"]
KEYS = ["linux_arm7", "linux_arm64", "ombix", "win"]
LONG = [31, 32, 127, 128, 255, 256, 300, 480, 500, 511, 512]
HOST_EXECUTABLES = {executable(version): version for version in [(6, 1, 2, 57), (10, 0, 0, 1), (1, 0, 0, 0)]}


@dataclass
class Case:
    words: list
    files: dict = field(default_factory=dict)  # bytes by name, None for a directory

    def lay_out(self, root):
        for name, content in self.files.items():
            path = os.path.join(root, name)
            os.makedirs(path if content is None else os.path.dirname(path), exist_ok=True)
            if content is not None:
                with open(path, "wb") as file:
                    file.write(content)


class Generator:
    """One case of a seed. `wild` decides how much goes wrong in it."""

    def __init__(self, seed, root):
        self.dice = random.Random(seed)
        self.root = root
        self.files = {}
        self.installed = []  # names of packages in the manifests
        self.wild = self.chance(0.35)

    def chance(self, share):
        return self.dice.random() < share

    def trap(self, share):
        return self.wild and self.chance(share)

    def pick(self, items):
        return self.dice.choice(items)

    def some(self, items, most):
        return [self.pick(items) for _ in range(self.dice.randint(0, most))]

    def long_text(self):
        return "x" * (self.pick(LONG) + self.dice.randint(-1, 1))

    def case(self):
        mode = self.dice.random()
        if mode < 0.72:
            words = self.batch()
        elif mode < 0.87:
            words = self.injection()
        elif mode < 0.97:
            words = [
                "--manifest",
                self.pick(["out.xml", "out/m.xml", "größe.xml", "inst", "./sensor.pkg", ""]),
            ]
            words += [
                "--archive",
                self.archive("sensor.pkg") if self.chance(0.6) else self.installation("inst"),
            ]
        else:
            words = self.some(["-h", "--help", "-v", "x", "--platform", "win", *FLAGS, "sensor.pkg"], 6)
        if self.chance(0.03):
            words.insert(
                self.dice.randint(0, len(words)), self.pick(["-h", "x", "-v", "--platform", "--help"])
            )
        return Case(words, self.files)

    # ---- Single library ----------------------------------------------------------------------------------

    def injection(self):
        name = self.pick(FILES)
        library = self.pick(["", "lib/", "lib\\"]) + name
        if not self.trap(0.05):
            self.files[library.replace("\\", "/")] = self.content()
        if self.trap(0.05):
            library = self.pick(
                ["lib", "a/" + self.long_text(), self.long_text() + ".so", "lib\x01.so", "\udcff.so"]
            )
        archive = self.archive(
            self.pick(["sensor.pkg", "stock/sensor.pkg"]), ["vekapp" + name, "VEKAPP" + name]
        )
        return ["--file", library, "--archive", archive]

    # ---- Batch -------------------------------------------------------------------------------------------

    def batch(self):
        count = self.dice.randint(0, 3) if self.wild else self.pick([1, 1, 1, 1, 2, 3])
        stock = [self.target(index) for index in range(count)]
        if stock and self.chance(0.08):
            stock.append(self.pick([stock[0], "Custom-" + stock[0], "", self.root + "/" + stock[0]]))
        if not stock or self.trap(0.1):
            self.stock_directory()
        load = [self.package(index) for index in range(self.dice.randint(0, 3))]
        if self.trap(0.05):
            load.append(
                self.pick(
                    ["", "missing", "missing.tar", "cfg.xml", self.long_text(), load[0] if load else "x"]
                )
            )
        remove = [self.pick(self.installed)] if self.installed and self.chance(0.6) else []
        if remove and self.chance(0.3):
            remove.append(self.pick(self.installed))
        if self.trap(0.1):
            remove += self.some(NAMES, 2)
        if self.trap(0.05):
            remove.append(self.pick([self.long_text(), "", "unknown"]))
        self.files["host/bin/win64/cfg.xml"] = self.configuration(stock, load, remove)
        name = self.pick(["cfg.xml"] * 8 + [self.root + "/host/bin/win64/cfg.xml", ".\\cfg.xml"])
        if self.trap(0.05):
            name = self.pick(["missing.xml", self.long_text(), "../win64/cfg.xml", "sub/cfg.xml", "."])
        words = ["--config", name]
        if self.chance(0.6):
            words += [
                "--platform",
                self.pick(KEYS + ["all"] if not self.trap(0.05) else ["Ombix", "x", self.long_text()]),
            ]
        return words

    def configuration(self, stock, load, remove):
        prefix = (
            "Custom"
            if not self.trap(0.1)
            else self.pick(["", "14", "out/x", "a b", self.long_text(), " ", "größe"])
        )
        children = [("OutputPrefix", {}, prefix)]
        lists = [("StockPackages", stock), ("VekPkgsToLoad", load), ("VekPkgsToRemove", remove)]
        children += [listing(name, items) for name, items in lists if items or self.chance(0.5)]
        if self.chance(0.2):
            self.dice.shuffle(children)
        if self.chance(0.1):
            children.append(
                self.pick([("Note", {"a": "1"}, "x"), ("OutputPrefix", {}, "Second"), "<!-- note -->"])
            )
        if self.trap(0.03):
            children.pop(0)
        return document(self.dice, ("BuildConfig", {}, children), 0.03 * self.wild)

    def target(self, index):
        """One entry of the stock list: an archive, an installation directory, or a trap."""
        if self.trap(0.06):
            self.files.update({"plain": b"no archive", "empty.pkg": b"", "directory": None})
            return self.pick(["plain", "empty.pkg", "directory", "missing.pkg", "no/such", self.long_text()])
        if self.chance(0.3):
            return self.installation(f"inst{index}") + self.pick(["", "", "/", "\\"])
        return self.archive(
            self.pick([f"sensor{index}.pkg", f"stock/s{index}.pkg", f"stock\\w{index}.pkg", f"g ö{index}"])
        )

    def stock_directory(self):
        if self.trap(0.2):
            return
        self.files["host/pkg"] = None
        for name in self.some(
            ["14-2.dat", "0-base.dat", "140.dat", "1-x.dat", "14.dat", "14-2.bin", "14.DAT"], 3
        ):
            self.archive("host/pkg/" + name)
        if self.trap(0.1):
            self.files["host/pkg/x." + "e" * self.dice.randint(30, 33)] = b""

    # ---- Archives ----------------------------------------------------------------------------------------

    def archive(self, path, names=()):
        platform = self.pick(KEYS[:3])
        script = self.script(platform, list(names) + DESTINATIONS)
        members = [self.member(name, self.content()) for name in self.host_members(script)]
        if not self.trap(0.04):
            members.append(self.member("script.xml", self.script_text(script)))
        if self.chance(0.6):
            members.append(self.member("vekPackages.xml", self.manifest(platform, DESTINATIONS)))
        if self.trap(0.03) and members:
            self.pick(members).crc ^= 1
        self.dice.shuffle(members)
        blob = build(members, self.pick([b"", b"", b"a comment"]))
        if self.trap(0.02):
            blob = self.pick([blob[:-5], blob + b"x", b"x" + blob, b"PK", build(members + members[:1])])
        name = path.replace("\\", "/")
        self.files[name] = blob
        if self.chance(0.05):  # the result of an earlier run
            self.files[os.path.join(os.path.dirname(name), "Custom-" + os.path.basename(name))] = b"earlier"
        return path

    def host_members(self, script):
        """Names of members: those that entries name, with a few missing, and the host's own."""
        sources = [item[1].get("source", "") for item in script if not isinstance(item, str)]
        names = {name for name in sources if name and not self.chance(0.1)}
        names |= set(self.some(["host/app", "host/größe", "data/", "empty", "data/12345-x"], 3))
        return sorted(names - {"script.xml", "vekPackages.xml"})

    def member(self, name, data):
        method = self.pick([STORED, STORED, DEFLATED])
        options = {}
        if self.chance(0.1):
            options["extra"] = struct.pack("<HH", 0x7855, 4) + b"user"
        if self.chance(0.1):
            options["comment"] = b"of the member"
        if self.chance(0.1):
            options["flags"] = HAS_DESCRIPTOR | (0 if name.isascii() else 0x0800)
        if self.trap(0.02):
            method, options["raw"] = self.pick([(BZIP2, b"not looked into"), (DEFLATED, b"\x07 no stream")])
        return Member(name, data, method, **options)

    def content(self):
        return self.pick([b"", b"old", b"content " * 30, zlib.compress(b"x" * 99), b"same", b"same"])

    def script(self, platform, names):
        items = []
        for _ in range(self.dice.randint(0 if self.wild else 1, 6)):
            name = self.pick(names) if not self.trap(0.04) else self.long_text()
            source = "data/12345-" + self.pick(FILES) if not self.trap(0.06) else self.odd_source()
            items.append(script_file(self.dice, name, source, self.some(MODELS[platform], 3)))
        models = self.pick(MODELS[platform])
        items.insert(self.pick([0, len(items)]), ("Device", {"model": models}, None))
        if not self.trap(0.03):
            value = self.pick(VERSIONS) if not self.trap(0.05) else self.long_text()
            items.insert(0, ("Version", {"value" if not self.trap(0.05) else "v": value}, None))
        if self.chance(0.03):
            items.insert(
                self.dice.randrange(len(items) + 1), self.pick(["loose", " text ", "&amp;", "<![CDATA[ ]]>"])
            )
        if self.chance(0.05):
            items.append(f"<!-- {self.pick(['R2', 'TX2', 'R8', 'nothing'])} -->")
        return items

    def odd_source(self):
        return self.pick(["", "script.xml", "vekPackages.xml", self.long_text(), "host/app"])

    def script_text(self, items):
        if self.trap(0.03):
            items = [item for item in items if item[0] != "Device"]
        return document(self.dice, (self.pick(["Startup", "Script"]), {}, items), 0.03 * self.wild)

    def manifest(self, platform, destinations):
        children = [("BeVersion", {}, self.pick(VERSIONS)), ("Platform", {}, platform)]
        if self.trap(0.04):
            children[0] = self.pick([("BeVersion", {}, self.long_text()), ("Version", {}, "x")])
        for _ in range(self.dice.randint(0, 3)):
            name = self.pick(NAMES) if not self.trap(0.03) else self.long_text()
            self.installed.append(name)
            entry = ("VekApp", {"name": name}, self.package_files(destinations, 0.1) or None)
            children.append(entry if not self.trap(0.04) else ("VekApp", {}, None))
        root = "VekAppPackage" if not self.trap(0.03) else "Other"
        return document(self.dice, (root, {}, children), 0.03 * self.wild)

    def package_files(self, destinations, lacking=0.0):
        """Files of a package; `lacking` is the share of those without a type, or without a destination."""
        kinds = ["VekApp", "VekApp", "Resource", "RESOURCE", "vekapp", "Other"]
        files = []
        for _ in range(self.dice.randint(0, 3)):
            kind = self.pick(kinds) if not self.trap(0.03) else self.long_text()
            destination = self.pick(destinations) if not self.trap(0.03) else self.long_text()
            if not self.wild:
                destination = destination or destinations[0]
            source = self.pick(SOURCES) if not self.trap(0.03) else self.long_text()
            files.append(package_file(self.dice, kind, source, destination, lacking or 0.05 * self.wild))
        return files

    def installation(self, path):
        if not self.trap(0.05):
            self.files[path + "/bin/win64/TaQor.exe"] = self.pick(
                [*HOST_EXECUTABLES] if not self.trap(0.1) else [executable(), b"MZ"]
            )
        self.files[path] = None
        for name in self.some(["libedge.so", "bin/addon.dll", "plugins/x", "new/sub/data.bin"], 3):
            self.files[path + "/" + name] = b"installed"
        if self.chance(0.6):
            self.files[path + "/vekPackages.xml"] = self.manifest("win", WIN_DESTINATIONS)
        return path

    # ---- Packages ----------------------------------------------------------------------------------------

    def package(self, index):
        groups = []
        for _ in range(self.dice.randint(1, 4)):
            key = self.pick(KEYS)
            if self.trap(0.06):
                key = self.pick([key + "x", key.upper(), "", self.long_text()])
            files = self.package_files(WIN_DESTINATIONS if key.startswith("win") else DESTINATIONS)
            groups.append(("Platform", {"name": key} if not self.trap(0.02) else {}, files or None))
        content = {"vek_manifest.xml": self.package_manifest(groups)}
        for name in SOURCES:
            if not self.trap(0.1):
                content[name.replace("\\", "/")] = self.content()
        if self.trap(0.02):
            content["below/vek_manifest.xml"] = content.pop("vek_manifest.xml")
        return self.stored_package(index, content)

    def package_manifest(self, groups):
        version = self.pick(["*", *VERSIONS]) if not self.trap(0.04) else self.long_text()
        name = self.pick(NAMES) if not self.trap(0.04) else self.long_text()
        children = [("BeVersion", {}, version), ("VekApp", {"name": name}, groups)]
        if self.trap(0.06):
            children = self.pick([children[:1], children[1:], [*children, children[1]], children[::-1]])
        root = "VekAppPackage" if not self.trap(0.03) else "Package"
        return document(self.dice, (root, {}, children), 0.03 * self.wild)

    def stored_package(self, index, content):
        """Lays the package down as a directory or a tar file; answers the entry that names it."""
        name = f"pkgs/p{index}"
        if self.chance(0.7):
            name = self.pick([name, f"pkg {index}", f"größe{index}"])
            self.files.update({f"{name}/{path}": data for path, data in content.items()})
            return name + self.pick(["", "", "/"])
        if self.trap(0.1):
            name = self.pick([f"old.tar.d/p{index}", ".tar", f"APP{index}.TAR", f"odd'{index};$HOME`x`.tar"])
            suffix = ""
        else:
            suffix = self.pick([".tar", ".tar.gz", ".tar.x"])
        data = packed(content, suffix.endswith("gz"))
        self.files[name + suffix] = data if not self.trap(0.05) else b"no tar file" * 200
        if suffix and self.chance(0.2):  # the directory of an earlier run
            place = os.path.splitext(name + suffix)[0]
            self.files[place + "/libedge.so"] = b"of an earlier run"
            if self.trap(0.2):
                self.files[place + "/vek_manifest.xml"] = b"<stale/>"
        return name + suffix


FLAGS = ["--file", "--archive", "--manifest", "--config"]


def packed(content, is_compressed):
    buffer = io.BytesIO()
    with tarfile.open(
        fileobj=buffer, mode="w:gz" if is_compressed else "w", format=tarfile.GNU_FORMAT
    ) as tar:
        for name, data in content.items():
            member = tarfile.TarInfo("./" + name)
            member.size, member.mode = len(data), 0o644
            tar.addfile(member, io.BytesIO(data))
    return buffer.getvalue()
