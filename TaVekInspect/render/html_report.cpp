#include "TaVekInspect/render/html_report.h"

#include <algorithm>

#include "TaVekInspect/render/html_style.h"
#include "TaVekInspect/render/html_writer.h"
#include "TaVekInspect/render/text.h"

namespace {

const char* classOf(Change kind) {
    return kind == Change::added ? "added" : kind == Change::removed ? "removed" : "changed";
}

std::string attribute(const char* name, const std::string& value) {
    return std::string(name) + "=\"" + value + '"';
}

/// The page under construction, section by section.
class Report {
  public:
    Report(const Upgrade& before, const Upgrade& after, const Difference& difference)
        : before_(before), after_(after), difference_(difference) {}

    std::string build() {
        html_.markup("<!DOCTYPE html>\n").open("html", R"(lang="en")");
        head();
        html_.open("body");
        title();
        summary();
        properties();
        packages();
        entries();
        members();
        unchangedMembers();
        texts();
        html_.close().close();
        return html_.html();
    }

  private:
    void head();
    void title();
    void problems(const Upgrade& upgrade);
    void summary();
    template <typename Item>
    void card(const char* label, std::size_t total, const std::vector<Item>& changes);
    void properties();
    void packages();
    void package(const RecordedPackage& package, const Upgrade& upgrade);
    void entries();
    void entrySide(const Changed<ScriptEntry>& change, bool isOld);
    void members();
    void memberRow(const ChangedMember& change, std::uint64_t largest);
    void bar(const char* kind, std::uint64_t size, std::uint64_t largest);
    void unchangedMembers();
    void texts();
    void hunk(const Hunk& hunk);
    void columns(std::initializer_list<const char*> headings);

    const Upgrade& before_;
    const Upgrade& after_;
    const Difference& difference_;
    HtmlWriter html_;
};

void Report::head() {
    html_.open("head").markup("<meta charset=\"utf-8\">\n");
    html_.markup("<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n");
    // The page needs nothing from anywhere, and shall not be talked into fetching it.
    html_.markup(
        "<meta http-equiv=\"Content-Security-Policy\" "
        "content=\"default-src 'none'; style-src 'unsafe-inline'\">\n");
    html_.element("title", "Changes from " + fileNameOf(before_.path) + " to " + fileNameOf(after_.path));
    html_.open("style").markup(htmlStyle).close().close();
}

void Report::title() {
    html_.element("h1", "Changes from " + fileNameOf(before_.path) + " to " + fileNameOf(after_.path));
    html_.open("div", R"(class="soft")").element("code", before_.path).text(" → ");
    html_.element("code", after_.path).close();
    problems(before_);
    problems(after_);
}

void Report::problems(const Upgrade& upgrade) {
    for (const Finding& finding : upgrade.problems) {
        html_.element("div", upgrade.path + ": " + finding.text, R"(class="note")");
    }
}

// ---- Summary -------------------------------------------------------------------------------------------

std::uint64_t packedSizeOf(const Upgrade& upgrade) {
    std::uint64_t size = 0;
    for (const zMemberInfo& member : upgrade.members) size += member.packedSize;
    return size;
}

void Report::summary() {
    html_.open("div", R"(class="cards")");
    const auto fact = [this](const char* label, const std::string& value, const std::string& more) {
        html_.open("div", R"(class="card")").element("span", label, R"(class="soft")");
        html_.element("b", value.empty() ? "unknown" : value).element("span", more).close();
    };
    fact("Platform", after_.platform(), "host version " + after_.hostVersion);
    card("Packages", after_.packages.size(), difference_.packages);
    card("Script entries", after_.entries.size(), difference_.entries);
    card("Members", after_.members.size(), difference_.members);
    if (!after_.isInstallation()) {
        fact("Packed size", sizeText(packedSizeOf(after_)), "was " + sizeText(packedSizeOf(before_)));
    }
    html_.close();
    if (difference_.isEmpty()) html_.element("h2", "Nothing has changed.");
}

template <typename Item>
void Report::card(const char* label, std::size_t total, const std::vector<Item>& changes) {
    html_.open("div", R"(class="card")").element("span", label, R"(class="soft")");
    html_.element("b", std::to_string(total));
    if (changes.empty()) html_.element("span", "unchanged", R"(class="soft")");
    for (const Change kind : {Change::added, Change::removed, Change::changed}) {
        const std::size_t count = countOf(changes, kind);
        if (count == 0) continue;
        html_.element("span", std::to_string(count) + ' ' + classOf(kind), attribute("class", classOf(kind)));
        html_.text(" ");
    }
    html_.close();
}

void Report::columns(std::initializer_list<const char*> headings) {
    html_.open("tr");
    for (const char* heading : headings) {
        const std::string_view text(heading);
        html_.element("th", text, text.ends_with("ize") ? R"(class="size")" : "");
    }
    html_.close();
}

// ---- Sections ------------------------------------------------------------------------------------------

void Report::properties() {
    if (difference_.properties.empty()) return;
    html_.element("h2", "Properties");
    html_.open("table");
    columns({"Property", "Before", "After"});
    for (const auto& change : difference_.properties) {
        html_.open("tr").element("td", change.before.name);
        html_.element("td", change.before.value, R"(class="half removed")");
        html_.element("td", change.after.value, R"(class="half added")").close();
    }
    html_.close();
}

void Report::packages() {
    if (difference_.packages.empty()) return;
    html_.element("h2", "Packages");
    html_.open("table");
    columns({"", "Package", "Files before", "Files after"});
    for (const auto& change : difference_.packages) {
        html_.open("tr").element("td", classOf(change.kind),
                                 attribute("class", std::string("mark ") + classOf(change.kind)));
        html_.element("td", change.present().name, R"(class="name")").open("td");
        package(change.before, before_);
        html_.close().open("td");
        package(change.after, after_);
        html_.close().close();
    }
    html_.close();
}

void Report::package(const RecordedPackage& package, const Upgrade& upgrade) {
    if (package.files.empty()) return;
    html_.open("ul");
    for (const RecordedFile& file : package.files) {
        html_.open("li").element("code", destinationOf(file, upgrade.platform()));
        html_.element("span", " " + file.type + ", " + file.source, R"(class="soft")").close();
    }
    html_.close();
}

void Report::entries() {
    if (difference_.entries.empty()) return;
    html_.element("h2", "Script entries");
    html_.open("table");
    columns({"", "Before", "After"});
    for (const auto& change : difference_.entries) {
        html_.open("tr").element("td", classOf(change.kind),
                                 attribute("class", std::string("mark ") + classOf(change.kind)));
        entrySide(change, true);
        entrySide(change, false);
        html_.close();
    }
    html_.close();
}

void Report::entrySide(const Changed<ScriptEntry>& change, bool isOld) {
    const bool isThere = change.kind != (isOld ? Change::added : Change::removed);
    html_.open("td", !isThere ? R"(class="half")"
                     : isOld  ? R"(class="half removed")"
                              : R"(class="half added")");
    if (isThere) {
        const ScriptEntry& entry = isOld ? change.before : change.after;
        html_.element("code", entry.name).markup("<br>");
        html_.element("span", entry.source, R"(class="soft")").markup("<br>");
        html_.element("span", joined(entry.controllers), R"(class="soft")");
    }
    html_.close();
}

void Report::members() {
    if (difference_.members.empty()) return;
    html_.element("h2", "Members");
    std::uint64_t largest = 1;
    for (const ChangedMember& change : difference_.members) {
        largest = std::max({largest, change.before.size, change.after.size});
    }
    html_.open("table");
    columns({"", "Member", "Old size", "New size", "Before and after"});
    for (const ChangedMember& change : difference_.members) memberRow(change, largest);
    html_.close();
}

void Report::memberRow(const ChangedMember& change, std::uint64_t largest) {
    const std::string kind = change.contentDiffers ? classOf(change.kind) : "repacked";
    const bool wasThere = change.kind != Change::added, isThere = change.kind != Change::removed;
    html_.open("tr").element("td", kind, attribute("class", "mark " + kind));
    html_.element("td", change.present().name, R"(class="name")");
    html_.element("td", wasThere ? sizeText(change.before.size) : "", R"(class="size")");
    html_.element("td", isThere ? sizeText(change.after.size) : "", R"(class="size")");
    html_.open("td", R"(class="bars")");
    if (wasThere) bar(isThere ? "old" : "old removed", change.before.size, largest);
    if (isThere) bar(wasThere ? "new" : "new added", change.after.size, largest);
    html_.close().close();
}

void Report::bar(const char* kind, std::uint64_t size, std::uint64_t largest) {
    const auto percent =
        static_cast<unsigned>(100.0 * static_cast<double>(size) / static_cast<double>(largest));
    html_.open("span",
               "class=\"bar " + std::string(kind) + "\" style=\"width:" + std::to_string(percent) + "%\"");
    html_.close();
}

/// The members that stay as they are, the largest first, not without end.
void Report::unchangedMembers() {
    constexpr std::size_t most = 200;
    std::vector<std::string> changed;
    for (const ChangedMember& change : difference_.members) changed.push_back(change.present().name);
    std::sort(changed.begin(), changed.end());
    std::vector<const zMemberInfo*> unchanged;
    for (const zMemberInfo& member : after_.members) {
        if (!std::binary_search(changed.begin(), changed.end(), member.name)) unchanged.push_back(&member);
    }
    if (unchanged.empty()) return;
    std::stable_sort(unchanged.begin(), unchanged.end(),
                     [](const zMemberInfo* a, const zMemberInfo* b) { return a->size > b->size; });
    html_.open("details").element("summary", counted(unchanged.size(), "unchanged member")).open("table");
    columns({"Member", "Size", "Share of the largest"});
    const std::uint64_t largest = std::max<std::uint64_t>(1, unchanged.front()->size);
    for (std::size_t i = 0; i < std::min(most, unchanged.size()); ++i) {
        html_.open("tr").element("td", unchanged[i]->name, R"(class="name")");
        html_.element("td", sizeText(unchanged[i]->size), R"(class="size")").open("td", R"(class="bars")");
        bar("new", unchanged[i]->size, largest);
        html_.close().close();
    }
    html_.close();
    if (unchanged.size() > most) html_.element("div", "The largest " + std::to_string(most) + " are shown.");
    html_.close();
}

// ---- Texts ---------------------------------------------------------------------------------------------

void Report::texts() {
    const auto hasText = [](const ChangedMember& change) { return !change.hunks.empty(); };
    if (std::none_of(difference_.members.begin(), difference_.members.end(), hasText)) return;
    html_.element("h2", "Texts");
    for (const ChangedMember& change : difference_.members) {
        if (!hasText(change)) continue;
        // A changed text is what a reviewer came for; a new or removed one is there to be looked up.
        html_.open("details", change.kind == Change::changed ? "open" : "").open("summary");
        html_.element("code", change.present().name).text(" ");
        html_.element("span", classOf(change.kind), attribute("class", classOf(change.kind))).close();
        html_.open("pre");
        for (const Hunk& part : change.hunks) hunk(part);
        html_.close().close();
    }
}

void Report::hunk(const Hunk& hunk) {
    html_.element("span", headingOf(hunk), R"(class="at")");
    for (const DiffLine& line : hunk.lines) {
        const char* kind = line.mark == '+'   ? R"(class="added")"
                           : line.mark == '-' ? R"(class="removed")"
                                              : "";
        html_.element("span", line.mark + line.text, kind);
        if (!line.endsLine) html_.element("span", "\\ No newline at end of file", R"(class="at")");
    }
}

}  // namespace

std::string htmlReport(const Upgrade& before, const Upgrade& after, const Difference& difference) {
    return Report(before, after, difference).build();
}
