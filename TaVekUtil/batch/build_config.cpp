#include "TaVekUtil/batch/build_config.h"

#include <exception>
#include <iostream>

#include "TaVekUtil/batch/stock_packages.h"
#include "platform/xml/xml.h"

namespace {

constexpr const char* operation = "TaVekUtil_Load_Config";

zXmlItem rootOf(zHandle document) {
    zXmlItem root = nullptr;
    Ta::Check(zXml_FindRoot(document, &root), operation);
    return root;
}

enum class EmptyTexts { kept, skipped };

/// Appends to `texts` the text of each child, whatever its name, of the root's child `name`, if there is one.
/// What was read before a failure stays.
void readList(zHandle document, const char* name, EmptyTexts emptyTexts, std::vector<std::string>& texts) {
    const zXmlItem root = rootOf(document);
    zXmlItem list = nullptr;
    if (zXml_FindChild(document, root, name, &list) != zStatus_Success) return;
    for (zXmlItem entry = zXml_FirstChild(document, list); entry != nullptr;
         entry = zXml_NextSibling(document, entry)) {
        Ta::PathText text;
        Ta::Check(zXml_ItemText(document, entry, text.data(), text.capacity()), operation);
        if (emptyTexts == EmptyTexts::kept || !text.empty()) texts.emplace_back(text.c_str());
    }
}

void chooseStockPackages(zHandle document, BuildConfig& config) {
    TaVekUtil_Read_StockPackages(document, config);
    if (config.stockPackages.empty()) {
        std::cout << "TaVekUtil: No Stock packages specified. Using default stock images." << std::endl;
        TaVekUtil_FindStockPackages(config.stockPackages);
    }
    if (config.stockPackages.empty()) {
        std::cerr << "TaVekUtil: Could not find any packages to process." << std::endl;
        // Not an exception that a caller could report: a run without anything to do must not pass for one.
        std::terminate();
    }
}

}  // namespace

void TaVekUtil_Load_Config(zHandle document, BuildConfig& config) {
    try {
        TaVekUtil_Read_OutputPrefix(document, config);
        chooseStockPackages(document, config);
        TaVekUtil_Read_VekPkgsToLoad(document, config);
        TaVekUtil_Read_VekPkgsToRemove(document, config);
    } catch (...) {
        std::cerr << "TaVekUtil: Failed to load config file." << std::endl;
        throw;
    }
}

void TaVekUtil_Read_OutputPrefix(zHandle document, BuildConfig& config) {
    zXmlItem item = nullptr;
    Ta::Check(zXml_FindChild(document, rootOf(document), "OutputPrefix", &item), operation);
    Ta::Check(zXml_ItemText(document, item, config.outputPrefix.data(), config.outputPrefix.capacity()),
              operation);
}

void TaVekUtil_Read_StockPackages(zHandle document, BuildConfig& config) {
    readList(document, "StockPackages", EmptyTexts::skipped, config.stockPackages);
}

// Empty texts stay in these: an entry that names nothing is a mistake, which loading and removing then
// report.

void TaVekUtil_Read_VekPkgsToLoad(zHandle document, BuildConfig& config) {
    readList(document, "VekPkgsToLoad", EmptyTexts::kept, config.vekPkgsToLoad);
}

void TaVekUtil_Read_VekPkgsToRemove(zHandle document, BuildConfig& config) {
    readList(document, "VekPkgsToRemove", EmptyTexts::kept, config.vekPkgsToRemove);
}
