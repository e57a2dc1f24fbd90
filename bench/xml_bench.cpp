// Start-up scripts of three sizes, read, and read, edited once and written, by this project's document model,
// by pugixml and by libxml2.
//
//   parse           bytes in memory to a document, which is then given back
//   parseEditWrite  the same, one attribute of the Version element changed, one File appended, and the whole
//                   document made bytes again
//
// Every document is parsed from a block of its own, as the tool does with an archive's member. pugixml reads
// with parse_full (comments, instructions, declaration and document type are kept, white space between
// elements is not) and writes with format_raw, its fastest, into a string, as its manual shows; libxml2 keeps
// everything. Each result of parseEditWrite is checked once for its edit. The counter `beyondTextPerNode` is
// what a document holds beyond the bytes of its text, for each of its elements and attributes.

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <malloc.h>

#include <cstdlib>
#include <map>
#include <pugixml.hpp>
#include <string>

#include "platform/base/object.h"
#include "platform/xml/xml.h"

namespace {

constexpr const char* newVersion = "9.9.9";

/// A start-up script of about `size` bytes.
const std::string& script(std::size_t size) {
    static std::map<std::size_t, std::string> scripts;
    std::string& text = scripts[size];
    if (!text.empty()) return text;
    text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Script>\n  <!-- Start-up of the sensor -->\n"
        "  <Version value=\"2.17.0\"/>\n";
    for (int i = 0; text.size() < size; ++i) {
        const std::string number = std::to_string(i);
        if (i % 20 == 0) text += "  <!-- Files of group " + std::to_string(i / 20) + " -->\n";
        text += "  <File name=\"libUnit" + number + ".so\" source=\"data/12345-libUnit" + number +
                ".so\"><Or><Eq property=\"Controller\" value=\"R4\"/></Or></File>\n";
    }
    return text += "</Script>\n";
}

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "xml_bench: %s\n", what);
    std::exit(1);
}

void checkWritten(const std::string& written) {
    require(written.find(newVersion) != std::string::npos && written.find("added.so") != std::string::npos,
            "the edit is not in what was written");
}

// ---- This project ---------------------------------------------------------------------------------------

struct Own {
    static constexpr const char* name = "own";
    zHandle document = nullptr;

    explicit Own(const std::string& text) {
        require(zXml_LoadBytes(&document, text.data(), text.size(), nullptr) == zStatus_Success,
                "own parser");
    }
    ~Own() { static_cast<void>(zObject_Destroy(document)); }
    void edit() const {
        zXmlItem item = nullptr;
        bool good = zXml_FindChild(document, nullptr, "Script/Version", &item) == zStatus_Success;
        good = good && zXml_SetAttrText(document, item, "value", newVersion) == zStatus_Success;
        good = good && zXml_AddItem(document, zXml_Root(document), "File", &item) == zStatus_Success;
        good = good && zXml_SetAttrText(document, item, "name", "added.so") == zStatus_Success;
        require(good, "own edit");
    }
    std::size_t write(std::string* copy) const {
        void* bytes = nullptr;
        std::size_t size = 0;
        require(zXml_SaveBytes(document, &bytes, &size, nullptr) == zStatus_Success, "own writer");
        if (copy != nullptr) copy->assign(static_cast<const char*>(bytes), size);
        zAllocator_Release(nullptr, bytes);
        return size;
    }
};

// ---- pugixml --------------------------------------------------------------------------------------------

struct StringWriter : pugi::xml_writer {
    std::string text;
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
};

struct Pugi {
    static constexpr const char* name = "pugixml";
    pugi::xml_document document;

    explicit Pugi(const std::string& text) {
        require(document.load_buffer(text.data(), text.size(), pugi::parse_full, pugi::encoding_utf8),
                "pugixml");
    }
    void edit() {
        pugi::xml_node root = document.child("Script");
        root.child("Version").attribute("value").set_value(newVersion);
        root.append_child("File").append_attribute("name").set_value("added.so");
    }
    std::size_t write(std::string* copy) const {
        StringWriter writer;
        document.save(writer, "", pugi::format_raw, pugi::encoding_utf8);
        if (copy != nullptr) *copy = writer.text;
        return writer.text.size();
    }
};

// ---- libxml2 --------------------------------------------------------------------------------------------

struct Libxml {
    static constexpr const char* name = "libxml2";
    xmlDocPtr document;

    explicit Libxml(const std::string& text)
        : document(
              xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_HUGE)) {
        require(document != nullptr, "libxml2");
    }
    ~Libxml() { xmlFreeDoc(document); }
    void edit() const {
        const auto text = [](const char* t) { return reinterpret_cast<const xmlChar*>(t); };
        xmlNodePtr root = xmlDocGetRootElement(document);
        xmlNodePtr version = xmlFirstElementChild(root);
        xmlSetProp(version, text("value"), text(newVersion));
        xmlSetProp(xmlNewChild(root, nullptr, text("File"), nullptr), text("name"), text("added.so"));
    }
    std::size_t write(std::string* copy) const {
        xmlChar* bytes = nullptr;
        int size = 0;
        xmlDocDumpMemory(document, &bytes, &size);
        if (copy != nullptr)
            copy->assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
        xmlFree(bytes);
        return static_cast<std::size_t>(size);
    }
};

// ---- Scenarios ------------------------------------------------------------------------------------------

/// What the program has taken from the C library's memory and not given back.
double heldBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

/// Bytes that a document holds beyond those of its text, for each element and attribute.
template <typename Library>
double beyondTextPerNode(const std::string& text) {
    double nodes = 0;
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos; ++at)
        nodes += text[at + 1] >= 'A';
    for (std::size_t at = 0; (at = text.find("=\"", at)) != std::string::npos; ++at) ++nodes;
    const double before = heldBytes();
    const Library document(text);
    return (heldBytes() - before - static_cast<double>(text.size())) / nodes;
}

template <typename Library>
void parse(benchmark::State& state) {
    const std::string& text = script(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        const Library document(text);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.counters["beyondTextPerNode"] = beyondTextPerNode<Library>(text);
}

template <typename Library>
void parseEditWrite(benchmark::State& state) {
    const std::string& text = script(static_cast<std::size_t>(state.range(0)));
    {
        std::string written;
        Library document(text);
        document.edit();
        document.write(&written);
        checkWritten(written);
    }
    for (auto _ : state) {
        Library document(text);
        document.edit();
        benchmark::DoNotOptimize(document.write(nullptr));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

template <typename Library>
void registerLibrary(std::int64_t size) {
    const std::string suffix = std::string("/") + Library::name;
    for (auto* scenario :
         {benchmark::RegisterBenchmark(("parse" + suffix).c_str(), parse<Library>),
          benchmark::RegisterBenchmark(("parseEditWrite" + suffix).c_str(), parseEditWrite<Library>)}) {
        scenario->Arg(size)->Unit(benchmark::kMillisecond);
    }
}

}  // namespace

int main(int count, char** words) {
    for (const std::int64_t size : {10'000, 1'000'000, 50'000'000}) {
        registerLibrary<Own>(size);
        registerLibrary<Pugi>(size);
        registerLibrary<Libxml>(size);
    }
    benchmark::Initialize(&count, words);
    benchmark::RunSpecifiedBenchmarks();
}
