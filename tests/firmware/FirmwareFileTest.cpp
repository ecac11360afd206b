#include <gtest/gtest.h>

#include <filesystem>

#include "TempDir.h"
#include <meridex/firmware/Crc.h>
#include <meridex/firmware/FirmwareFolder.h>
#include <meridex/firmware/FirmwareImage.h>
#include <meridex/firmware/FirmwareVersion.h>

namespace meridex {
namespace {

using test::TempDir;

std::string Payload(std::size_t size, int seed = 1) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 31 + seed * 7) & 0xFF);
    return bytes;
}

std::string WriteImage(const TempDir& dir, const std::string& name, std::vector<std::string> models,
                       const std::string& version, const std::string& date = "2026-01-01") {
    return dir.Write(name, FirmwareImage::Make(std::move(models), version, date, Payload(3000)).Serialize());
}

TEST(Crc, KnownCheckValues) {
    EXPECT_EQ(Crc::Crc32("123456789"), 0xCBF43926u);
    EXPECT_EQ(Crc::Crc16("123456789"), 0x29B1);
    EXPECT_EQ(Crc::Crc32("56789", Crc::Crc32("1234")), 0xCBF43926u);
}

TEST(FirmwareVersion, ComparesNumericPartsAsNumbers) {
    EXPECT_GT(FirmwareVersion::Compare("2.10", "2.9"), 0);
    EXPECT_LT(FirmwareVersion::Compare("1.9.9", "2.0"), 0);
    EXPECT_EQ(FirmwareVersion::Compare("2.1", "2.1.0"), 0);
    EXPECT_EQ(FirmwareVersion::Compare("2.01", "2.1"), 0);
    EXPECT_GT(FirmwareVersion::Compare("2.1.b", "2.1.A"), 0);
}

TEST(FirmwareImage, AWrittenFileReadsBackWithEverything) {
    TempDir dir;
    FirmwareImage made = FirmwareImage::Make({"WL400", "WL410"}, "2.4.1", "2026-03-02", Payload(5000),
                                             "Rain gauge fix\nsecond line");
    std::string path = dir.Write("wl400-2.4.1.mxfw", made.Serialize());
    FirmwareImage::ReadError error;
    FirmwareImage read = FirmwareImage::Read(path, &error);
    ASSERT_FALSE(read.IsNull()) << error.description;
    EXPECT_EQ(error.number, 0);
    EXPECT_EQ(read.Path(), path);
    EXPECT_EQ(read.Models(), (std::vector<std::string>{"WL400", "WL410"}));
    EXPECT_EQ(read.Version(), "2.4.1");
    EXPECT_EQ(read.Date(), "2026-03-02");
    EXPECT_EQ(read.Description(), "Rain gauge fix second line");
    EXPECT_EQ(read.Payload(), Payload(5000));
    EXPECT_EQ(read.PayloadCrc(), Crc::Crc32(Payload(5000)));
    EXPECT_TRUE(read.FitsModel("wl410"));
    EXPECT_FALSE(read.FitsModel("WL4"));
    EXPECT_FALSE(read.FitsModel(""));
}

TEST(FirmwareImage, DamagedAndForeignFilesAreRefusedWithTheirReason) {
    TempDir dir;
    const std::string good = FirmwareImage::Make({"WL400"}, "2.0", "", Payload(2000)).Serialize();
    FirmwareImage::ReadError error;

    EXPECT_TRUE(FirmwareImage::Read(dir.File("missing.mxfw"), &error).IsNull());
    EXPECT_EQ(error.number, 53);
    EXPECT_EQ(error.description, "File not found");

    struct Case {
        std::string name, bytes, reason;
    };
    std::string flipped = good;
    flipped[flipped.size() / 2] ^= 0x01;
    std::string header = good;
    header[header.find("VERSION=2.0") + 8] = '3';  // a forged header: the file's own CRC catches it
    std::vector<Case> cases = {
        {"flipped.mxfw", flipped, "checksum does not match"},
        {"short.mxfw", good.substr(0, good.size() - 100), "checksum does not match"},
        {"header.mxfw", header, "checksum does not match"},
        {"text.mxfw", "MODELS=WL400\nVERSION=1\n", "not a firmware file"},
        {"empty.mxfw", "", "not a firmware file"},
        {"cut.mxfw", good.substr(0, 16), "cut short"},
    };
    for (const Case& c : cases) {
        EXPECT_TRUE(FirmwareImage::Read(dir.Write(c.name, c.bytes), &error).IsNull()) << c.name;
        EXPECT_EQ(error.number, FirmwareImage::kInvalidFileFormat) << c.name;
        EXPECT_NE(error.description.find(c.reason), std::string::npos) << c.name << ": " << error.description;
    }
}

TEST(FirmwareFolder, OffersOnlyTheModelsFilesNewestFirstWithTheRunningOneMarked) {
    TempDir dir;
    WriteImage(dir, "a-1.2.mxfw", {"WL400"}, "1.2");
    WriteImage(dir, "b-1.10.MXFW", {"WL400", "WL410"}, "1.10");
    WriteImage(dir, "c-1.9.mxfw", {"WL410", "wl400"}, "1.9", "2026-05-01");
    WriteImage(dir, "d-1.9.mxfw", {"WL400"}, "1.9", "2026-04-01");
    WriteImage(dir, "rg.mxfw", {"RG200"}, "9.0");
    WriteImage(dir, "sub/e-5.0.mxfw", {"WL400"}, "5.0");  // sub-folders are not searched
    WriteImage(dir, "notes.txt", {"WL400"}, "8.0");      // nor other extensions
    dir.Write("broken.mxfw", "MXFW garbage");

    FirmwareFolder folder(dir.Path());
    ASSERT_TRUE(folder.Exists());
    EXPECT_EQ(folder.Images().size(), 5u);
    ASSERT_EQ(folder.Refused().size(), 1u);
    EXPECT_EQ(std::filesystem::path(folder.Refused()[0].path).filename(), "broken.mxfw");

    std::vector<FirmwareFolder::Offer> offers = folder.OffersFor("WL400", "1.9");
    std::vector<std::string> names;
    std::vector<int> comparisons;
    for (const auto& offer : offers) {
        names.push_back(std::filesystem::path(offer.image.Path()).filename());
        comparisons.push_back(offer.comparison > 0 ? 1 : offer.comparison < 0 ? -1 : 0);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"b-1.10.MXFW", "c-1.9.mxfw", "d-1.9.mxfw", "a-1.2.mxfw"}));
    EXPECT_EQ(comparisons, (std::vector<int>{1, 0, 0, -1}));
    EXPECT_TRUE(offers[1].Running());

    EXPECT_TRUE(folder.OffersFor("XX1", "1.0").empty());
    // A logger without runnable firmware: everything is an upgrade.
    for (const auto& offer : folder.OffersFor("WL400", "")) EXPECT_GT(offer.comparison, 0);

    FirmwareFolder single(dir.File("rg.mxfw"));
    ASSERT_EQ(single.Images().size(), 1u);
    EXPECT_EQ(single.OffersFor("rg200", "9.0").size(), 1u);
    EXPECT_FALSE(FirmwareFolder(dir.File("nowhere")).Exists());
}

}  // namespace
}  // namespace meridex
