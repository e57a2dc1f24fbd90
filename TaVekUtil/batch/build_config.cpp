#include "TaVekUtil/batch/build_config.h"

#include <exception>
#include <iostream>

#include "TaVekUtil/batch/stock_packages.h"
#include "platform/xml/xml.h"

namespace {

constexpr const char* operation = "TaVekUtil_Load_Config";

/// The texts of the children, whatever their names, of the root's child `name`; none when that is absent.
std::vector<std::string> readList(zHandle document, zXmlItem root, const char* name) {
    std::vector<std::string> texts;
    zXmlItem list = nullptr;
    if (zXml_FindChild(document, root, name, &list) != zStatus_Success) return texts;
    for (zXmlItem entry = zXml_FirstChild(document, list); entry != nullptr;
         entry = zXml_NextSibling(document, entry)) {
        Ta::PathText text;
        Ta::Check(zXml_ItemText(document, entry, text.data(), text.capacity()), operation);
        texts.emplace_back(text.c_str());
    }
    return texts;
}

void readOutputPrefix(zHandle document, zXmlItem root, BuildConfig& config) {
    zXmlItem item = nullptr;
    Ta::Check(zXml_FindChild(document, root, "OutputPrefix", &item), operation);
    Ta::Check(zXml_ItemText(document, item, config.outputPrefix.data(), config.outputPrefix.capacity()),
              operation);
}

void chooseStockPackages(zHandle document, zXmlItem root, BuildConfig& config) {
    config.stockPackages = readList(document, root, "StockPackages");
    std::erase(config.stockPackages, "");
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
        zXmlItem root = nullptr;
        Ta::Check(zXml_FindRoot(document, &root), operation);
        readOutputPrefix(document, root, config);
        chooseStockPackages(document, root, config);
        // Empty texts stay: an entry that names nothing is a mistake, which loading and removing then report.
        config.vekPkgsToLoad = readList(document, root, "VekPkgsToLoad");
        config.vekPkgsToRemove = readList(document, root, "VekPkgsToRemove");
    } catch (...) {
        std::cerr << "TaVekUtil: Failed to load config file." << std::endl;
        throw;
    }
}
