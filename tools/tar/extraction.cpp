#include "tools/tar/extraction.h"

#include <algorithm>

#include "platform/archive/shown_name.h"
#include "tools/tar/failure.h"
#include "tools/tar/member_path.h"

namespace tar {
namespace {

void require(const std::error_code& error) {
    if (error) throw Failure(error.message());
}

bool isLink(const std::string& path) {
    bool link = false;
    require(os::isLink(path, link));
    return link;
}

os::FileType typeOf(const std::string& path) {
    os::FileType type{};
    require(os::fileType(path, type));
    return type;
}

/// Runs `step`; what it throws gets the member's name.
template <typename Step>
void forMember(const std::string& name, Step step) {
    try {
        step();
    } catch (const Failure& failure) {
        throw Failure("member " + shownName(name) + ": " + failure.what());
    }
}

}  // namespace

Extraction::Extraction(std::string directory, Listener listener)
    : directory_(std::move(directory)), listener_(std::move(listener)) {
    if (typeOf(directory_) != os::FileType::directory) throw Failure(directory_ + ": Not a directory");
}

void Extraction::begin(const Member& member) {
    listener_(member.name);
    forMember(member.name, [&] { start(member); });
}

void Extraction::start(const Member& member) {
    const Components components = memberPath(member.name);
    if (components.empty() && member.kind != Kind::directory)
        throw Failure("it would replace the directory itself");
    current_ = {pathOf(components, components.size()), member};
    prepareParents(components);
    switch (member.kind) {
        case Kind::file:
            return startFile();
        case Kind::directory:
            return makeDirectory();
        case Kind::symbolicLink:
            return noteSymbolicLink(components.size() - 1);
        case Kind::hardLink:
            return makeHardLink();
        default:
            throw Failure("a device, or a kind of member that this tar cannot unpack");
    }
}

void Extraction::write(std::span<const std::uint8_t> bytes) {
    forMember(current_.member.name, [&] { require(file_.write(bytes.data(), bytes.size())); });
}

void Extraction::end() {
    if (current_.member.kind != Kind::file) return;
    forMember(current_.member.name, [&] {
        require(file_.commit());
        finishEntry(current_);
    });
}

void Extraction::finish() {
    for (const auto& entry : symbolicLinks_) {
        const Place link{entry.first, entry.second};
        forMember(link.member.name, [&] {
            require(os::createSymbolicLink(link.member.link, link.path));
            require(os::setModificationTime(link.path, link.member.time));
        });
    }
    // Those inside others first: making them changed the outer ones' times, and may be forbidden afterwards.
    std::stable_sort(directories_.begin(), directories_.end(),
                     [](const Place& a, const Place& b) { return a.path.size() > b.path.size(); });
    for (const Place& place : directories_) forMember(place.member.name, [&] { finishEntry(place); });
}

// ---- Members -------------------------------------------------------------------------------------------

void Extraction::startFile() {
    clear(current_.path);
    require(file_.open(current_.path));
}

void Extraction::makeDirectory() {
    if (isLink(current_.path) || typeOf(current_.path) != os::FileType::directory) {
        clear(current_.path);
        require(os::createDirectories(current_.path));
    }
    directories_.push_back(current_);
}

void Extraction::noteSymbolicLink(std::size_t depth) {
    checkLink(current_.member.link, depth);
    clear(current_.path);
    symbolicLinks_.emplace(current_.path, current_.member);
}

void Extraction::makeHardLink() {
    const Components target = memberPath(current_.member.link);
    const std::string path = pathOf(target, target.size());
    const auto noted = symbolicLinks_.find(path);
    if (noted != symbolicLinks_.end()) {
        current_.member.link = noted->second.link;
        current_.member.time = noted->second.time;
        return noteSymbolicLink(memberPath(current_.member.name).size() - 1);
    }
    if (path == current_.path) return;
    checkParents(target);
    if (isLink(path) || typeOf(path) != os::FileType::regular) throw Failure("a link to what is no file");
    clear(current_.path);
    require(os::createHardLink(path, current_.path));
}

// ---- Places --------------------------------------------------------------------------------------------

std::string Extraction::pathOf(const Components& components, std::size_t count) const {
    std::string path = directory_;
    for (std::size_t i = 0; i < count; ++i) path += '/' + components[i];
    return path;
}

/// The directories that the place lies in must be no links.
void Extraction::checkParents(const Components& components) const {
    for (std::size_t count = 1; count < components.size(); ++count) {
        const std::string path = pathOf(components, count);
        if (symbolicLinks_.contains(path) || isLink(path)) {
            throw Failure("the name leads through a symbolic link");
        }
    }
}

/// Makes the directories that the place lies in.
void Extraction::prepareParents(const Components& components) const {
    checkParents(components);
    if (components.size() > 1) require(os::createDirectories(pathOf(components, components.size() - 1)));
}

/// Removes what is at `path`, unless it is a plain file, which its successor replaces in one step.
void Extraction::clear(const std::string& path) {
    symbolicLinks_.erase(path);
    const bool isReplaceable =
        current_.member.kind == Kind::file && !isLink(path) && typeOf(path) == os::FileType::regular;
    if (isReplaceable) return;
    const std::error_code error = os::removeFile(path);
    if (error != std::errc::no_such_file_or_directory) require(error);
}

void Extraction::finishEntry(const Place& place) const {
    require(os::setPermissions(place.path, place.member.mode));
    require(os::setModificationTime(place.path, place.member.time));
}

}  // namespace tar
