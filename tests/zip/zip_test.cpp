#include "support/error.h"
#include "support/files.h"
#include "support/process_state.h"
#include "support/text.h"
#include "testing/fake_platform.h"
#include "testing/temp_folder.h"
#include "testing/truth.h"
#include "testing/zip_builder.h"
#include "update/unzip.h"
#include "zip/zip_archive.h"
#include "zip/zip_name.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <random>

namespace quorvex::testing {
namespace {

using ::testing::HasSubstr;
using zip::ZipArchive;

std::string RandomText(std::size_t length, unsigned seed) {
    std::mt19937 random(seed);
    std::string text(length, '\0');
    // Few letters, so that it compresses but not to nothing.
    for (char& c : text) c = static_cast<char>('a' + random() % 7);
    return text;
}

// What opening and unpacking the bytes leaves in an empty folder: "name=length ...", or the error's words.
std::string Unpacked(const std::string& bytes) {
    try {
        ZipArchive archive;
        archive.Open(std::make_unique<zip::ZipMemorySource>(bytes));
        std::string result;
        for (const zip::ZipEntry& entry : archive.Entries()) {
            std::string unpacked;
            archive.Unpack(entry, [&](std::string_view piece) { unpacked += piece; });
            result += support::ToUtf8(entry.name) + "=" + std::to_string(unpacked.size()) + " ";
        }
        return result;
    } catch (const support::Error& error) {
        return "refused: " + support::ToUtf8(error.Description());
    }
}

TEST(ZipArchive, ReadsWhatHonestProgramsWrite) {
    const std::string large = RandomText(700000, 1); // several pieces of input and output
    ZipBuilder builder;
    builder.Add("large.dat", large);
    builder.Add("stored.dat", RandomText(300000, 2), false);
    builder.Add("empty.dat", "");
    builder.Add("nothing.dat", "", false);
    builder.AddStreamed("streamed.dat", large, true);
    builder.AddStreamed("plainly.dat", large, false);
    builder.Add("caf\xC3\xA9.dat", "x").flags = 0x0800;
    builder.parts.back().localFlags = 0x0800;
    const std::string expected = "large.dat=700000 stored.dat=300000 empty.dat=0 nothing.dat=0 streamed.dat=700000 "
                                 "plainly.dat=700000 caf\xC3\xA9.dat=1 ";
    EXPECT_EQ(Unpacked(builder.Bytes()), expected);
    builder.comment = std::string(3000, 'c') + "PK\x05\x06 looks like the end" + std::string(40, 'c');
    EXPECT_EQ(Unpacked(builder.Bytes()), expected);
    builder.behind = "foreign bytes";
    EXPECT_EQ(Unpacked(builder.Bytes()), expected);
    EXPECT_EQ(Unpacked(ZipBuilder().Bytes()), "") << "an archive of nothing";
}

// What three entries of random text leave, the last one streamed, after a change of the archive.
std::string Spoiled(const std::function<void(ZipBuilder&)>& spoil) {
    ZipBuilder builder;
    builder.Add("a.dat", RandomText(5000, 3));
    builder.Add("b.dat", RandomText(5000, 4));
    builder.AddStreamed("c.dat", RandomText(5000, 5), true);
    spoil(builder);
    return Unpacked(builder.Bytes());
}

TEST(ZipArchive, RefusesWhatItDoesNotSupportInClearWords) {
    const auto both = [](std::uint16_t ZipPart::*central, std::uint16_t ZipPart::*local, std::uint16_t value) {
        return [=](ZipBuilder& builder) { builder.parts[0].*central = builder.parts[0].*local = value; };
    };
    EXPECT_THAT(Spoiled(both(&ZipPart::flags, &ZipPart::localFlags, 0x0001)), HasSubstr("encrypted"));
    EXPECT_THAT(Spoiled(both(&ZipPart::flags, &ZipPart::localFlags, 0x2041)), HasSubstr("encrypted"));
    EXPECT_THAT(Spoiled(both(&ZipPart::flags, &ZipPart::localFlags, 0x0020)), HasSubstr("patch"));
    EXPECT_THAT(Spoiled(both(&ZipPart::method, &ZipPart::localMethod, 12)), HasSubstr("method 12"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.zip64Locator = true; }), HasSubstr("zip64"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.parts[0].unpackedSize = 0xFFFFFFFF; }), HasSubstr("zip64"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.disk = 1; }), HasSubstr("volumes"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.parts.resize(1001, b.parts[0]); }), HasSubstr("too many"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) {
                    b.parts[0].madeBy = 0x031E; // a link, as Unix programs store it
                    b.parts[0].externalAttributes = 0120777U << 16U;
                }),
                HasSubstr("not a file"));
    EXPECT_EQ(Unpacked("not a zip at all, but longer than an end record"), "refused: The file is not a zip archive");
    EXPECT_EQ(Unpacked(""), "refused: The file is not a zip archive");
}

TEST(ZipArchive, RefusesHeadersThatContradictEachOther) {
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.parts[1].localName = "../x.dat"; }), HasSubstr("contradicts"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.parts[1].localMethod = 0; }), HasSubstr("contradicts"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.parts[1].localUnpackedSize = 1; }), HasSubstr("contradicts"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.parts[1].localFlags = 1; }), HasSubstr("contradicts"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.parts[2].descriptor[5] ^= 1; }), HasSubstr("not those of the directory"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.centralOffsetError = -3; }), HasSubstr("not where"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.countError = -1; }), HasSubstr("more than"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.countError = 1; }), HasSubstr("damaged"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) { b.parts[1].packedSize = 1U << 30U; }), HasSubstr("cut off"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) {
                    b.parts[1] = b.parts[0];
                    b.parts[1].name = b.parts[1].localName = "A.DAT"; // one file on Windows
                }),
                HasSubstr("twice"));
    EXPECT_THAT(Spoiled([](ZipBuilder& b) {
                    b.parts[1] = b.parts[0];
                    b.parts[1].name = "d.dat"; // two names for the same bytes
                    b.parts[1].claimedOffset = 0;
                }),
                HasSubstr("contradicts"));
}

// Small bombs grow by a file inside a file: each level is an honest entry, and their bytes count again and again.
TEST(ZipArchive, RefusesEntriesThatLieInsideOthers) {
    ZipBuilder inner;
    inner.Add("b.dat", RandomText(500, 10));
    const std::string whole = inner.Bytes();
    ZipBuilder outer;
    outer.Add("a.dat", whole.substr(0, whole.find("PK\x01\x02")), false);
    outer.Add("b.dat", RandomText(500, 10)).claimedOffset = 30 + 5; // behind the header and name of "a.dat"
    EXPECT_THAT(Unpacked(outer.Bytes()), HasSubstr("overlap"));
}

TEST(ZipArchive, RefusesDataThatIsNotWhatTheDirectoryPromises) {
    const std::string contents = RandomText(100000, 6);
    const auto refused = [&contents](const std::function<void(ZipPart&)>& spoil, bool deflated = true) {
        ZipBuilder builder;
        spoil(builder.Add("a.dat", contents, deflated));
        return Unpacked(builder.Bytes());
    };
    EXPECT_THAT(refused([](ZipPart& p) { p.crc = p.localCrc = 1; }), HasSubstr("checksum"));
    EXPECT_THAT(refused([](ZipPart& p) { p.data[5000] ^= 0x10; }), HasSubstr("refused"));
    EXPECT_THAT(refused([](ZipPart& p) { p.data[50000] ^= 0x10; }, false), HasSubstr("checksum"));
    EXPECT_THAT(refused([](ZipPart& p) { p.unpackedSize = ++p.localUnpackedSize; }), HasSubstr("smaller"));
    EXPECT_THAT(refused([](ZipPart& p) { p.unpackedSize = --p.localUnpackedSize; }), HasSubstr("larger"));
    EXPECT_THAT(refused([](ZipPart& p) {
                    p.data.resize(p.data.size() - 100);
                    p.packedSize = p.localPackedSize = p.packedSize - 100;
                }),
                HasSubstr("cut off"));
    EXPECT_THAT(refused([](ZipPart& p) {
                    p.data += "more";
                    p.packedSize = p.localPackedSize = p.packedSize + 4;
                }),
                HasSubstr("Unexpected data after the entry"));
}

// 300 MB of zeros in 300 KB: refused from the directory alone, and when the directory lies, at the promised size.
TEST(ZipArchive, DoesNotUnpackBombs) {
    const std::string zeros = Deflated(std::string(300000000, '\0'));
    ZipBuilder builder;
    ZipPart& part = builder.Add("bomb.dat", "");
    part.data = zeros;
    part.packedSize = part.localPackedSize = static_cast<std::uint32_t>(zeros.size());
    part.unpackedSize = part.localUnpackedSize = 300000000;
    EXPECT_THAT(Unpacked(builder.Bytes()), HasSubstr("too much"));
    part.unpackedSize = part.localUnpackedSize = 1000;
    EXPECT_THAT(Unpacked(builder.Bytes()), HasSubstr("larger"));
}

TEST(ZipArchive, EveryCutAndEveryFlippedBitIsRefusedOrHarmless) {
    ZipBuilder builder;
    const std::string contents = RandomText(600, 7);
    builder.Add("a.dat", contents);
    builder.AddStreamed("b.dat", contents, true);
    const std::string whole = builder.Bytes();
    const std::string good = Unpacked(whole);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_THAT(Unpacked(whole.substr(0, length)), HasSubstr("refused")) << "cut to " << length;
    }
    std::size_t harmless = 0;
    for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
        std::string damaged = whole;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
        const std::string result = Unpacked(damaged);
        if (result == good) {
            ++harmless; // versions, times, attributes
        } else {
            EXPECT_THAT(result, HasSubstr("refused")) << "bit " << bit;
        }
    }
    EXPECT_LT(harmless, whole.size()) << "most of an archive's bits matter";
}

TEST(ZipName, OnlyPlainFileNamesPass) {
    for (const std::wstring& name : Items(L"UPDATE_F_20260131.dat, a, read me.txt, caf\u00e9.dat, COMPANY.dat, "
                                          L"com10.dat, nullify, ...a, con-1.dat")) {
        EXPECT_TRUE(zip::IsPlainFileName(name)) << support::ToUtf8(name);
    }
    for (const std::wstring& name :
         Items(L"., .., ../evil.dat, ..\\evil.dat, /evil.dat, \\evil.dat, C:\\evil.dat, C:evil.dat, folder/, a/b, "
               L"file.dat:stream, trailing., what?, a*, a<b, a|b, \"a\", tab\t, CON, con.dat, Nul.txt, NUL .dat, aux., "
               L"COM1, com9.dat, LPT0.x, COM\u00b2.dat, CONIN$, clock$.dat, \\\\server\\share\\x")) {
        EXPECT_FALSE(zip::IsPlainFileName(name)) << support::ToUtf8(name);
    }
    for (const wchar_t* name : {L"", L" leading", L"trailing "}) EXPECT_FALSE(zip::IsPlainFileName(name));
    EXPECT_FALSE(zip::IsPlainFileName(std::wstring(201, L'a')));
    EXPECT_FALSE(zip::IsPlainFileName(std::wstring(L"a\0b", 3)));
    // Bytes that are no text could be read as one name by one program and as another by the next.
    EXPECT_THROW(zip::DecodeEntryName("caf\xE9.dat", false), support::Error);
    EXPECT_THROW(zip::DecodeEntryName("caf\xE9.dat", true), support::Error);
}

// --- Unzip -----------------------------------------------------------------------------------------------------------

class UnzipTest : public ::testing::Test {
  protected:
    UnzipTest() { support::Process().dataPath = folder_.Text(); }
    ~UnzipTest() override { support::Process().dataPath = L""; }

    bool Run(const std::string& archive, bool overwrite = true, const std::wstring& title = L"Unziping file") {
        support::WriteFileBytes(archive_, archive);
        return update::Unzip(platform_, platform_, title, L"Unziping file", archive_, folder_.Text(), {}, overwrite);
    }
    // The folder's files but the logs.
    std::vector<std::wstring> Files() const {
        std::vector<std::wstring> names;
        for (const std::wstring& name : support::ListFiles(folder_.Text(), L"", L"")) {
            if (!name.ends_with(L".log")) names.push_back(name);
        }
        return names;
    }
    std::string ErrorLog() const {
        const std::wstring log = folder_.File(L"Error1.log");
        return support::FileExists(log) ? support::ReadFileBytes(log) : std::string();
    }

    TempFolder folder_;
    TempFolder elsewhere_;
    std::wstring archive_ = elsewhere_.File(L"UPDATE_F_20260131.zip");
    FakePlatform platform_;
};

TEST_F(UnzipTest, ExtractsEveryFileAndShowsWhatItDoes) {
    ZipBuilder builder;
    builder.Add("UPDATE_F_20260131.dat", "first");
    builder.Add("UPDATE_T_20260131.dat", "second");
    EXPECT_TRUE(Run(builder.Bytes()));
    EXPECT_EQ(support::ReadFileBytes(folder_.File(L"UPDATE_F_20260131.dat")), "first");
    EXPECT_EQ(support::ReadFileBytes(folder_.File(L"UPDATE_T_20260131.dat")), "second");
    EXPECT_THAT(Files(), ::testing::UnorderedElementsAre(L"UPDATE_F_20260131.dat", L"UPDATE_T_20260131.dat"));
    EXPECT_THAT(platform_.zipStatus,
                ::testing::ElementsAre(L"Unziping file|Unziping file|Opening UPDATE_F_20260131.zip",
                                       L"Unziping file|Unziping file|Extracting UPDATE_F_20260131.zip"));
    EXPECT_FALSE(platform_.zipStatusShown) << "the window is gone";
    EXPECT_EQ(platform_.pumps, 2);
    EXPECT_TRUE(support::FileExists(archive_)) << "the archive is its caller's";
    EXPECT_TRUE(ErrorLog().empty());
    platform_.zipStatus.clear();
    EXPECT_TRUE(Run(builder.Bytes(), true, {}));
    EXPECT_TRUE(platform_.zipStatus.empty()) << "nothing is shown without a title";
}

TEST_F(UnzipTest, ReplacesAnExistingFileOnlyWhenToldTo) {
    support::WriteFileBytes(folder_.File(L"UPDATE_T_20260131.dat"), "old");
    ZipBuilder builder;
    builder.Add("UPDATE_F_20260131.dat", "new");
    builder.Add("UPDATE_T_20260131.dat", "new");
    EXPECT_FALSE(Run(builder.Bytes(), false));
    EXPECT_EQ(support::ReadFileBytes(folder_.File(L"UPDATE_T_20260131.dat")), "old");
    EXPECT_THAT(Files(), ::testing::ElementsAre(L"UPDATE_T_20260131.dat")) << "all or nothing";
    EXPECT_TRUE(Run(builder.Bytes(), true));
    EXPECT_EQ(support::ReadFileBytes(folder_.File(L"UPDATE_T_20260131.dat")), "new");
}

TEST_F(UnzipTest, AFailedExtractionLeavesNothingBehindAndSaysWhy) {
    support::WriteFileBytes(folder_.File(L"UPDATE_T_20260131.dat"), "old");
    ZipBuilder builder;
    builder.Add("UPDATE_F_20260131.dat", RandomText(50000, 8));
    ZipPart& damaged = builder.Add("UPDATE_T_20260131.dat", RandomText(500000, 9));
    damaged.crc = damaged.localCrc = 99;
    EXPECT_FALSE(Run(builder.Bytes()));
    EXPECT_THAT(Files(), ::testing::ElementsAre(L"UPDATE_T_20260131.dat"));
    EXPECT_EQ(support::ReadFileBytes(folder_.File(L"UPDATE_T_20260131.dat")), "old");
    EXPECT_FALSE(platform_.zipStatusShown);
    EXPECT_TRUE(platform_.messages.empty());
    EXPECT_THAT(ErrorLog(), HasSubstr("The checksum of \"UPDATE_T_20260131.dat\" is wrong'"));
}

TEST_F(UnzipTest, RefusesAPasswordAndAMissingArchive) {
    ZipBuilder builder;
    builder.Add("UPDATE_F_20260131.dat", "x");
    support::WriteFileBytes(archive_, builder.Bytes());
    EXPECT_FALSE(update::Unzip(platform_, platform_, {}, {}, archive_, folder_.Text(), L"secret", true));
    EXPECT_FALSE(update::Unzip(platform_, platform_, {}, {}, elsewhere_.File(L"none.zip"), folder_.Text(), {}, true));
    EXPECT_FALSE(update::Unzip(platform_, platform_, {}, {}, archive_, folder_.File(L"no such folder"), {}, true));
    EXPECT_TRUE(Files().empty());
}

// Packages come over plain http: nothing but an update's database may reach the data folder.
TEST_F(UnzipTest, WritesNothingButDatabasesOfUpdates) {
    for (const char* name : {"PAF_FULL.dat", "PAF_SUBSTITUTION.txt", "PAF_FULL.dat.journal", "host.exe", "version.dll",
                             "UPDATE_F_20260131.exe", "UPDATE_F_2026013.dat", "UPDATE_1_20260131.dat", "Update.lock",
                             "UPDATE_F_20260131.dat.journal", "desktop.ini"}) {
        ZipBuilder builder;
        builder.Add("UPDATE_F_20260131.dat", "x");
        builder.Add(name, "x");
        EXPECT_FALSE(Run(builder.Bytes())) << name;
        EXPECT_TRUE(Files().empty()) << name;
        EXPECT_THAT(ErrorLog(), HasSubstr(name));
    }
}

// The last of several files cannot take its place: the others must not stay.
TEST_F(UnzipTest, PlacesSeveralFilesOrNone) {
    support::WriteFileBytes(folder_.File(L"UPDATE_F_20260131.dat"), "old");
    const auto inTheWay = support::ToPath(folder_.File(L"UPDATE_Z_20260131.dat.replaced"));
    std::filesystem::create_directories(inTheWay / "full");
    std::filesystem::create_directories(support::ToPath(folder_.File(L"UPDATE_Z_20260131.dat")));
    ZipBuilder builder;
    for (const char* name : {"UPDATE_F_20260131.dat", "UPDATE_T_20260131.dat", "UPDATE_Z_20260131.dat"}) {
        builder.Add(name, "new");
    }
    EXPECT_FALSE(Run(builder.Bytes()));
    EXPECT_EQ(support::ReadFileBytes(folder_.File(L"UPDATE_F_20260131.dat")), "old");
    EXPECT_THAT(Files(), ::testing::ElementsAre(L"UPDATE_F_20260131.dat"));
    std::filesystem::remove_all(inTheWay);
    std::filesystem::remove(support::ToPath(folder_.File(L"UPDATE_Z_20260131.dat")));
    EXPECT_TRUE(Run(builder.Bytes()));
    EXPECT_EQ(support::ReadFileBytes(folder_.File(L"UPDATE_F_20260131.dat")), "new");
    EXPECT_EQ(Files().size(), 3U) << "no older file stays under another name";
}

} // namespace
} // namespace quorvex::testing
