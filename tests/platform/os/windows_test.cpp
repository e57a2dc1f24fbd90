// What Windows alone knows: drives, network roots, attributes, files in use, the old limits of paths.

#include <gmock/gmock.h>
#include <windows.h>
// After windows.h, whose types it uses.
#include <aclapi.h>

#include "platform/os/os.h"
#include "platform/os/windows_api.h"
#include "tests/platform/os/files.h"
#include "tests/testing/scratch_directory.h"

namespace {

using os::FileType;
using os::InputFile;
using os::OutputFile;
using os::windows::errorOf;
using os::windows::Handle;
using os::windows::nativePath;
using testing::ElementsAre;
using testing::EndsWith;
using testing::save;
using testing::ScratchDirectory;
using testing::StartsWith;
using testing::typeOf;

DWORD attributesOf(const std::string& path) {
    return ::GetFileAttributesW(nativePath(path).c_str());
}

void setAttributes(const std::string& path, DWORD attributes) {
    EXPECT_TRUE(::SetFileAttributesW(nativePath(path).c_str(), attributes));
}

Handle openSharing(const std::string& path, DWORD access, DWORD sharing) {
    return Handle(
        ::CreateFileW(nativePath(path).c_str(), access, sharing, nullptr, OPEN_EXISTING, 0, nullptr));
}

TEST(WindowsRoot, isADriveOrAShare) {
    EXPECT_EQ(os::rootLength("C:\\x"), 3u);
    EXPECT_EQ(os::rootLength("c:/x"), 3u);
    EXPECT_EQ(os::rootLength("C:x"), 2u);
    EXPECT_EQ(os::rootLength("C:"), 2u);
    EXPECT_EQ(os::rootLength("1:\\x"), 0u);
    EXPECT_EQ(os::rootLength("\\\\server\\share\\x"), 15u);
    EXPECT_EQ(os::rootLength("\\\\server\\share"), 14u);
    EXPECT_EQ(os::rootLength("\\\\server"), 8u);
    EXPECT_EQ(os::rootLength("\\\\?\\C:\\x"), 7u);
}

TEST(WindowsRoot, makesAPathAbsolute) {
    EXPECT_TRUE(os::isAbsolute("C:\\x"));
    EXPECT_TRUE(os::isAbsolute("C:x"));
    EXPECT_TRUE(os::isAbsolute("z:"));
    EXPECT_TRUE(os::isAbsolute("\\\\server\\share"));
    EXPECT_FALSE(os::isAbsolute("1:\\x"));
    EXPECT_FALSE(os::isAbsolute("CC:\\x"));
}

TEST(WindowsPath, isWholeAndHasOneKindOfSeparator) {
    EXPECT_EQ(nativePath("C:/a\\b/./c/../d"), L"C:\\a\\b\\d");
    EXPECT_EQ(nativePath(""), L"");
    EXPECT_EQ(nativePath("NUL"), L"\\\\.\\NUL");
}

TEST(WindowsPath, getsTheUnlimitedFormWhenItIsLong) {
    const std::string name(250, 'n');
    EXPECT_EQ(nativePath("C:/" + name), L"\\\\?\\C:\\" + std::wstring(250, L'n'));
    EXPECT_EQ(nativePath("//server/share/" + name), L"\\\\?\\UNC\\server\\share\\" + std::wstring(250, L'n'));
    EXPECT_EQ(nativePath("//?/C:/" + name), L"\\\\?\\C:\\" + std::wstring(250, L'n'));
    const std::wstring relative = nativePath(name);
    EXPECT_THAT(relative, StartsWith(L"\\\\?\\")) << "the working directory counts as well";
    EXPECT_THAT(relative, EndsWith(std::wstring(250, L'n')));
}

TEST(WindowsPath, thatIsNoUtf8NamesNothing) {
    FileType type{};
    EXPECT_FALSE(os::fileType("\xFF\xFE", type));
    EXPECT_EQ(type, FileType::absent);
    OutputFile file;
    EXPECT_TRUE(file.open("\xFF\xFE"));
}

TEST(LongPath, worksEverywhere) {
    const ScratchDirectory scratch;
    std::string directory = scratch.path();
    for (int i = 0; i < 3; ++i) directory += '/' + std::string(200, static_cast<char>('a' + i));
    ASSERT_FALSE(os::createDirectories(directory));
    EXPECT_EQ(typeOf(directory), FileType::directory);

    const std::string file = directory + "/file.txt";
    ASSERT_FALSE(save(file, "old"));
    ASSERT_FALSE(save(file, "new"));
    EXPECT_EQ(typeOf(file), FileType::regular);
    InputFile input;
    ASSERT_FALSE(input.open(file));
    EXPECT_EQ(input.size(), 3u);
    EXPECT_TRUE(input.isSameFileAs(file));
    std::vector<std::string> names;
    ASSERT_FALSE(os::listFiles(directory, names));
    EXPECT_THAT(names, ElementsAre("file.txt"));
    os::FileVersion version{};
    EXPECT_FALSE(os::fileVersion(file, version));
    input.close();
    EXPECT_FALSE(os::removeFile(file));

    // The test's own tidying up knows only short paths.
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(::RemoveDirectoryW(nativePath(directory).c_str()));
        directory.resize(directory.size() - 201);
    }
}

TEST(WindowsOutput, hidesTheTemporaryFileButNotTheResult) {
    const ScratchDirectory scratch;
    OutputFile file;
    ASSERT_FALSE(file.open(scratch.path("a.txt")));
    ASSERT_EQ(scratch.entries().size(), 1u);
    EXPECT_NE(attributesOf(scratch.path(scratch.entries()[0])) & FILE_ATTRIBUTE_HIDDEN, 0u);
    ASSERT_FALSE(file.commit());
    EXPECT_EQ(attributesOf(scratch.path("a.txt")) & FILE_ATTRIBUTE_HIDDEN, 0u);
}

TEST(WindowsOutput, keepsTheAttributes) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "old");
    setAttributes(path, FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    ASSERT_FALSE(save(path, "new"));
    EXPECT_EQ(scratch.read("a.txt"), "new");
    EXPECT_EQ(attributesOf(path) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM),
              DWORD{FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM});
}

TEST(WindowsOutput, refusesAReadOnlyFileAtOnce) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "old");
    setAttributes(path, FILE_ATTRIBUTE_READONLY);
    OutputFile file;
    const std::error_code error = file.open(path);
    EXPECT_EQ(error, std::errc::permission_denied);
    EXPECT_EQ(error.message(), "The file is read-only");
    EXPECT_EQ(scratch.read("a.txt"), "old");
    EXPECT_EQ(scratch.entries().size(), 1u);
    const std::error_code removing = os::removeFile(path);
    EXPECT_EQ(removing.message(), "The file is read-only");
    setAttributes(path, FILE_ATTRIBUTE_NORMAL);
}

TEST(WindowsOutput, tellsThatTheTargetIsInUseAndLosesNothing) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "old");
    {
        const Handle user = openSharing(path, GENERIC_READ, FILE_SHARE_READ);
        ASSERT_TRUE(user.valid());
        const std::error_code error = save(path, "new");
        EXPECT_EQ(error, std::errc::device_or_resource_busy);
        EXPECT_EQ(error.message(), "The file is in use by another program");
        EXPECT_EQ(os::removeFile(path), std::errc::device_or_resource_busy);
        EXPECT_EQ(scratch.read("a.txt"), "old");
        EXPECT_EQ(scratch.entries().size(), 1u);
    }
    EXPECT_FALSE(save(path, "new"));
    EXPECT_EQ(scratch.read("a.txt"), "new");
}

TEST(WindowsOutput, keepsTheAccessList) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "old");
    // Nobody inherits anything; everyone may read, no more.
    EXPLICIT_ACCESSW access{};
    wchar_t everyone[] = L"EVERYONE";
    ::BuildExplicitAccessWithNameW(&access, everyone, GENERIC_READ | DELETE | READ_CONTROL, SET_ACCESS,
                                   NO_INHERITANCE);
    PACL list = nullptr;
    if (::SetEntriesInAclW(1, &access, nullptr, &list) != ERROR_SUCCESS) {
        GTEST_SKIP() << "the system knows no name EVERYONE";
    }
    std::wstring name = nativePath(path);
    const auto kind = DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION;
    ASSERT_EQ(::SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, kind, nullptr, nullptr, list, nullptr),
              DWORD{ERROR_SUCCESS});
    ::LocalFree(list);

    const auto description = [&] {
        std::vector<char> bytes(4096);
        DWORD size = 0;
        EXPECT_TRUE(::GetFileSecurityW(name.c_str(), DACL_SECURITY_INFORMATION, bytes.data(),
                                       static_cast<DWORD>(bytes.size()), &size));
        bytes.resize(size);
        return bytes;
    };
    const auto before = description();
    ASSERT_FALSE(save(path, "new"));
    EXPECT_EQ(description(), before);
    ASSERT_FALSE(save(scratch.path("b.txt"), "new"));
    name = nativePath(scratch.path("b.txt"));
    if (description() == before) GTEST_SKIP() << "no access lists of a file's own here (Wine)";
}

TEST(WindowsDevice, isWrittenDirectly) {
    EXPECT_EQ(typeOf("NUL"), FileType::other);
    EXPECT_FALSE(save("NUL", "content"));
    InputFile file;
    ASSERT_FALSE(file.open("NUL"));
    EXPECT_FALSE(file.isRegular());
    EXPECT_EQ(file.size(), 0u);
    char byte = 0;
    std::size_t count = 9;
    EXPECT_FALSE(file.readNext(&byte, 1, count));
    EXPECT_EQ(count, 0u);
}

Handle makePipe(const std::string& name) {
    return Handle(::CreateNamedPipeW(nativePath(name).c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 4096,
                                     4096, 0, nullptr));
}

TEST(WindowsPipe, isWrittenDirectly) {
    const std::string name = R"(\\.\pipe\tavek-test-)" + std::to_string(::GetCurrentProcessId());
    const Handle server = makePipe(name);
    ASSERT_TRUE(server.valid());
    EXPECT_EQ(typeOf(name), FileType::other);
    ASSERT_FALSE(save(name, "through a pipe"));
    char bytes[32] = {};
    DWORD size = 0;
    EXPECT_TRUE(::ReadFile(server.get(), bytes, sizeof bytes, &size, nullptr));
    EXPECT_EQ(std::string(bytes, size), "through a pipe");
}

TEST(WindowsPipe, isReadFromFrontToBack) {
    const std::string name = R"(\\.\pipe\tavek-test-back-)" + std::to_string(::GetCurrentProcessId());
    Handle server = makePipe(name);
    ASSERT_TRUE(server.valid());
    InputFile file;
    ASSERT_FALSE(file.open(name));
    EXPECT_FALSE(file.isRegular());
    EXPECT_EQ(file.size(), 0u);
    DWORD size = 0;
    ASSERT_TRUE(::WriteFile(server.get(), "content", 7, &size, nullptr));
    char bytes[32] = {};
    std::size_t count = 0;
    ASSERT_FALSE(file.readNext(bytes, sizeof bytes, count));
    EXPECT_EQ(std::string(bytes, count), "content");
    server.reset();
    ASSERT_FALSE(file.readNext(bytes, sizeof bytes, count));
    EXPECT_EQ(count, 0u);
}

/// Makes a symbolic link, for which Windows wants a privilege. Wine only claims to have made it.
bool makeLink(const std::string& link, const std::wstring& destination) {
    constexpr DWORD unprivileged = 2;  // SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE
    ::CreateSymbolicLinkW(nativePath(link).c_str(), destination.c_str(), unprivileged);
    const DWORD attributes = attributesOf(link);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

TEST(WindowsLink, isFollowedAndNotReplaced) {
    const ScratchDirectory scratch;
    scratch.write("directory/a.txt", "old");
    if (!makeLink(scratch.path("link"), L"directory\\a.txt")) {
        GTEST_SKIP() << "no symbolic links here (Wine, or no privilege)";
    }
    ASSERT_FALSE(save(scratch.path("link"), "new"));
    EXPECT_EQ(scratch.read("directory/a.txt"), "new");
    EXPECT_NE(attributesOf(scratch.path("link")) & FILE_ATTRIBUTE_REPARSE_POINT, 0u);

    ASSERT_TRUE(makeLink(scratch.path("dangling"), nativePath(scratch.path("directory/b.txt"))));
    ASSERT_FALSE(save(scratch.path("dangling"), "content"));
    EXPECT_EQ(scratch.read("directory/b.txt"), "content");

    ASSERT_TRUE(makeLink(scratch.path("loop"), L"loop"));
    EXPECT_EQ(save(scratch.path("loop"), "x"), std::errc::too_many_symbolic_link_levels);
}

TEST(WindowsLink, isMadeForFilesAndDirectories) {
    const ScratchDirectory scratch;
    scratch.write("directory/a.txt", "content");
    const std::error_code error = os::createSymbolicLink("directory/a.txt", scratch.path("file-link"));
    if (error == std::errc::operation_not_supported || error == std::errc::permission_denied) {
        GTEST_SKIP() << "no symbolic links here (Wine, or no privilege)";
    }
    ASSERT_FALSE(error);
    EXPECT_EQ(scratch.read("file-link"), "content");
    ASSERT_FALSE(os::createSymbolicLink("directory", scratch.path("directory-link")));
    EXPECT_EQ(typeOf(scratch.path("directory-link")), FileType::directory);
    bool link = false;
    ASSERT_FALSE(os::isLink(scratch.path("directory-link"), link));
    EXPECT_TRUE(link);
}

TEST(WindowsFileName, isNoDevice) {
    for (const char* name :
         {"CON", "nul", "Aux.txt", "prn .x", "COM1", "lpt9.tar.gz", "COM\u00B9", "conin$"}) {
        EXPECT_FALSE(os::isFileName(name)) << name;
    }
    for (const char* name : {"CONSOLE", "nul1", "COM", "COM10", "LPTX", "a.con"}) {
        EXPECT_TRUE(os::isFileName(name)) << name;
    }
}

TEST(WindowsFileName, hasNoCharacterOfOtherMeaning) {
    for (const char* name :
         {"a:b", "C:", "a?", "a*", "<a", "a>", "a|b", "a\"b", "a\tb", "a.", "a ", "..", "\xFF"}) {
        EXPECT_FALSE(os::isFileName(name)) << name;
    }
}

TEST(WindowsError, comparesAndReadsAsOnOtherSystems) {
    EXPECT_EQ(errorOf(ERROR_PATH_NOT_FOUND), std::errc::no_such_file_or_directory);
    EXPECT_EQ(errorOf(ERROR_PATH_NOT_FOUND).message(), "No such file or directory");
    EXPECT_EQ(errorOf(ERROR_ACCESS_DENIED), std::errc::permission_denied);
    EXPECT_EQ(errorOf(ERROR_ACCESS_DENIED).message(), "Permission denied");
    EXPECT_EQ(errorOf(ERROR_DISK_FULL), std::errc::no_space_on_device);
    EXPECT_EQ(errorOf(ERROR_DISK_FULL).message(), "No space left on device");
    EXPECT_EQ(errorOf(ERROR_HANDLE_DISK_FULL), std::errc::no_space_on_device);
    EXPECT_EQ(errorOf(ERROR_WRITE_PROTECT), std::errc::read_only_file_system);
    EXPECT_EQ(errorOf(ERROR_CRC).message(), "Input/output error");
    EXPECT_FALSE(errorOf(ERROR_SUCCESS));
}

TEST(WindowsError, thatNobodyElseKnowsHasTheSystemsWords) {
    const std::error_code error = errorOf(ERROR_BAD_EXE_FORMAT);
    EXPECT_EQ(error.default_error_condition().category(), error.category());
    EXPECT_FALSE(error.message().empty());
    EXPECT_NE(error.message().back(), '\n');
    EXPECT_EQ(errorOf(0x0FFFFFFF).message(), "Windows error 268435455");
}

}  // namespace
