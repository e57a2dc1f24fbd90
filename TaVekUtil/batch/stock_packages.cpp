#include "TaVekUtil/batch/stock_packages.h"

#include <iostream>

#include "platform/base/directory.h"
#include "platform/base/list.h"
#include "platform/base/object.h"
#include "platform/base/path.h"
#include "platform/base/text.h"

namespace {

std::vector<std::string> filesIn(const std::string& directory, const char* operation) {
    Ta::Object<void*> list;
    Ta::Check(zArrayList_Construct(list.out(), zItemType_String, 0, nullptr), operation);
    Ta::Check(zDirectory_ListFiles(directory.c_str(), list.get()), operation);
    std::vector<std::string> names;
    for (std::size_t index = 0; index < zArrayList_Count(list.get()); ++index) {
        names.emplace_back(zArrayList_String(list.get(), index));
    }
    return names;
}

std::string combine(const std::string& directory, const std::string& name, const char* operation) {
    Ta::PathText path;
    Ta::Check(zPath_Combine(directory.c_str(), name.c_str(), path.data(), path.capacity()), operation);
    return path.c_str();
}

/// The directory of the stock archives: "pkg" beside "bin" when the program lies in the host's "bin\win64".
std::string TaVekUtil_PkgPath() {
    constexpr const char* operation = "TaVekUtil_PkgPath";
    Ta::PathText path;
    Ta::Check(zDirectory_Application(path.data(), path.capacity()), operation);
    Ta::Check(zPath_Directory(path.c_str(), path.data(), path.capacity()), operation);
    Ta::Check(zPath_Directory(path.c_str(), path.data(), path.capacity()), operation);
    return combine(path.c_str(), "pkg", operation);
}

}  // namespace

bool TaVekUtil_IsStockPackage(const std::string& name) {
    constexpr const char* operation = "TaVekUtil_FindStockPackages";
    Ta::ShortText extension;
    Ta::Check(zPath_Extension(name.c_str(), extension.data(), extension.capacity()), operation);
    const bool prefixed = name.starts_with("14") || name.starts_with("0-");
    return name.size() > 2 && prefixed && zStrEquals(extension.c_str(), "dat");
}

void TaVekUtil_FindStockPackages(std::vector<std::string>& packages) {
    constexpr const char* operation = "TaVekUtil_FindStockPackages";
    try {
        const std::string directory = TaVekUtil_PkgPath();
        std::vector<std::string> found;
        for (const std::string& name : filesIn(directory, operation)) {
            if (TaVekUtil_IsStockPackage(name)) found.push_back(combine(directory, name, operation));
        }
        packages = std::move(found);
    } catch (...) {
        std::cerr << "TaVekUtil: Failed finding stock packages." << std::endl;
    }
}

std::string TaVekUtil_FindFilepath(const std::string& directory, const std::string& fileName) {
    constexpr const char* operation = "TaVekUtil_FindFilepath";
    for (const std::string& name : filesIn(directory, operation)) {
        if (zStrEquals(name.c_str(), fileName.c_str())) return combine(directory, name, operation);
    }
    return {};
}
