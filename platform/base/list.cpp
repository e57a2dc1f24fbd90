#include "platform/base/list.h"

#include <memory>
#include <string>
#include <vector>

#include "platform/base/failure.h"

namespace {

class StringList : public zObject {
  public:
    const char* kind() const override { return "string list"; }

    std::vector<std::string> items;
};

}  // namespace

zStatus zArrayList_Construct(zHandle* list, zItemType type, std::size_t initialCapacity, const zAllocator*) {
    *list = nullptr;
    if (type != zItemType_String) return failure::record(zStatus_Unsupported, "lists hold strings alone");
    return failure::guarded([&] {
        auto made = std::make_unique<StringList>();
        made->items.reserve(initialCapacity);
        *list = made.release()->handle();
        return zStatus_Success;
    });
}

zStatus zArrayList_AddString(zHandle list, const char* text) {
    auto* strings = zObject::as<StringList>(list);
    if (strings == nullptr)
        return failure::record(zStatus_BadArgument, "the handle is that of no string list");
    return failure::guarded([&] {
        strings->items.emplace_back(text);
        return zStatus_Success;
    });
}

std::size_t zArrayList_Count(zHandle list) {
    const auto* strings = zObject::as<StringList>(list);
    return strings == nullptr ? 0 : strings->items.size();
}

const char* zArrayList_String(zHandle list, std::size_t index) {
    return index < zArrayList_Count(list) ? zObject::as<StringList>(list)->items[index].c_str() : nullptr;
}
