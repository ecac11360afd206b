#include <gtest/gtest.h>

#include <meridex/firmware/LinkFrame.h>

namespace meridex {
namespace {

using LinkFrame::Reader;

TEST(LinkFrame, ReaderFindsFramesAcrossSplitsGarbageAndDamage) {
    std::string first = LinkFrame::Encode(LinkFrame::WriteBlock, std::string("\x00\x00\x00\x00payload\xA5\x5A", 13));
    std::string second = LinkFrame::Encode(LinkFrame::Identify, "");
    std::string damaged = LinkFrame::Encode(LinkFrame::Verify, "abc");
    damaged[6] ^= 0x40;

    Reader reader;
    LinkFrame::Frame frame;
    std::string stream = "noise\xA5" + first + damaged + second;
    // Byte by byte: no frame is handed out before it is whole.
    std::vector<std::pair<Reader::Result, std::uint8_t>> seen;
    for (char c : stream) {
        reader.Append(std::string_view(&c, 1));
        for (Reader::Result r; (r = reader.Next(frame)) != Reader::Result::None;)
            seen.emplace_back(r, r == Reader::Result::FrameReady ? frame.type : 0);
    }
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0], std::make_pair(Reader::Result::FrameReady, std::uint8_t(LinkFrame::WriteBlock)));
    EXPECT_EQ(seen[1].first, Reader::Result::BadFrame);
    EXPECT_EQ(seen[2], std::make_pair(Reader::Result::FrameReady, std::uint8_t(LinkFrame::Identify)));
    EXPECT_EQ(reader.Buffered(), 0u);

    // A length beyond the limit is a bad frame, not a wait for bytes that never come.
    reader.Append(std::string("\xA5\x5A\x01\xFF\xFF", 5));
    EXPECT_EQ(reader.Next(frame), Reader::Result::BadFrame);
    EXPECT_EQ(LinkFrame::GetU32(std::string("\x78\x56\x34\x12", 4), 0), 0x12345678u);
}

}  // namespace
}  // namespace meridex
