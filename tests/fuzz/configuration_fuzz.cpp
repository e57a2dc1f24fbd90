// Reads any bytes as a configuration, and compares what is loaded with a plain walk over the document.

#include "TaVekUtil/batch/build_config.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

using fuzz::MaybeText;
using fuzz::require;
using Texts = std::optional<std::vector<std::string>>;

/// The texts of a list's children; nothing when one of them is too long.
Texts list(zHandle document, const char* name, bool skipsEmpty) {
    std::vector<std::string> texts;
    zXmlItem parent = fuzz::childNamed(document, zXml_Root(document), name);
    if (parent == nullptr) return texts;
    for (zXmlItem child : fuzz::children(document, parent)) {
        const MaybeText text = fuzz::itemText(document, child, 512);
        if (!text) return std::nullopt;
        if (!text->empty() || !skipsEmpty) texts.push_back(*text);
    }
    return texts;
}

MaybeText prefix(zHandle document) {
    zXmlItem item = fuzz::childNamed(document, zXml_Root(document), "OutputPrefix");
    return item == nullptr ? std::nullopt : fuzz::itemText(document, item, 256);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Ta::Object<void*> document;
    if (zXml_LoadBytes(document.out(), data, size, nullptr) != zStatus_Success) return 0;
    const MaybeText outputPrefix = prefix(document.get());
    const Texts stock = list(document.get(), "StockPackages", true);
    const Texts load = list(document.get(), "VekPkgsToLoad", false);
    const Texts remove = list(document.get(), "VekPkgsToRemove", false);
    // Without a stock archive the process would end, as it should.
    if (outputPrefix && stock && stock->empty()) return 0;

    const bool isSound = outputPrefix && stock && load && remove;
    const fuzz::Streams streams;
    BuildConfig config;
    try {
        TaVekUtil_Load_Config(document.get(), config);
        require(isSound, "loads what it should refuse");
        require(config.outputPrefix.c_str() == *outputPrefix, "another prefix");
        require(config.stockPackages == *stock, "other stock packages");
        require(config.vekPkgsToLoad == *load && config.vekPkgsToRemove == *remove, "other packages");
        require(streams.errors.str().empty(), "an error line without a failure");
    } catch (const Ta::Exception& exception) {
        require(!isSound, exception.what());
        require(streams.errors.str() == "TaVekUtil: Failed to load config file.\n", "fails without its line");
        require(exception.operation() == "TaVekUtil_Load_Config", "fails in another's name");
    }
    return 0;
}
