#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/archive/codec.h"

/// What is behind a container handle: the members and the edits to them. The operations of archive.h, whose
/// contracts hold here too; in addition these may throw std::bad_alloc.
class Container : public zObject {
  public:
    explicit Container(const zAllocator* allocator);
    const char* kind() const override { return "archive container"; }

    zStatus load(const std::string& path);
    zStatus save(const std::string& path);

    zStatus find(std::string_view name, std::size_t& index);
    /// The content of a member that a find has made ready, else null.
    const Content* readyContent(std::size_t index);

    zStatus addData(std::string_view name, const void* data, std::size_t size);
    zStatus addLive(std::string_view name, std::shared_ptr<LiveContent> live);
    std::shared_ptr<LiveContent> live(std::string_view name);
    void remove(std::string_view name);

    zStatus describe(std::vector<zMemberInfo>& members);
    zStatus verify(std::string_view name);
    zStatus trySave();

  private:
    zStatus add(std::string_view name, std::unique_ptr<Content> content);
    zStatus makeReady(std::size_t index);
    zStatus describeAdded(std::size_t index, zMemberInfo& info);
    std::string context() const;
    void forgetDecoded();

    const zAllocator* allocator_;
    std::string path_;  // of the loaded file, "" without one
    std::unique_ptr<Codec> codec_;
    MemberTable members_;
    std::vector<std::size_t> decoded_;  // loaded members whose bytes are in memory
};
