#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/os/os.h"
#include "tools/tar/member_reader.h"

namespace tar {

/// Writes members into a directory, and nothing anywhere else: a member that would land outside, that leads
/// through a symbolic link, or that is a link leading outside, throws Failure. Files appear complete or not
/// at all; what is there already is replaced, but a directory is never replaced by something else.
///
/// Files and directories get the time of their member and its permissions less the umask, as far as the
/// system has such. Symbolic links, and the times and permissions of directories, are made last.
class Extraction : public MemberSink {
  public:
    /// Is told the name of each member that is begun.
    using Listener = std::function<void(const std::string& name)>;

    /// Unpacks into the existing `directory`.
    Extraction(std::string directory, Listener listener);

    void begin(const Member& member) override;
    void write(std::span<const std::uint8_t> bytes) override;
    void end() override;

    /// Makes what is made last; to be called behind the last member.
    void finish();

  private:
    using Components = std::vector<std::string>;
    struct Place {
        std::string path;
        Member member;
    };

    void start(const Member& member);
    void startFile();
    void makeDirectory();
    void noteSymbolicLink(std::size_t depth);
    void makeHardLink();

    std::string pathOf(const Components& components, std::size_t count) const;
    void checkParents(const Components& components) const;
    void prepareParents(const Components& components) const;
    void clear(const std::string& path);
    void finishEntry(const Place& place) const;

    std::string directory_;
    Listener listener_;
    Place current_;
    os::OutputFile file_;
    std::map<std::string, Member> symbolicLinks_;  // by path
    std::vector<Place> directories_;
};

}  // namespace tar
