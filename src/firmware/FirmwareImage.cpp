#include <meridex/firmware/FirmwareImage.h>

#include <charconv>
#include <cstdio>
#include <filesystem>

#include <meridex/firmware/Crc.h>
#include <meridex/firmware/LinkFrame.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/Text.h>

namespace meridex {
namespace {

constexpr char kMagic[] = "MXFW";
constexpr std::uint16_t kFormatVersion = 1;
constexpr std::size_t kFixedSize = 10;                    // magic, format version, header length
constexpr std::size_t kMaxHeader = 64 * 1024;
constexpr std::uintmax_t kMaxFile = 64ull * 1024 * 1024;  // far above any logger's memory

const std::string kEmpty;
const std::vector<std::string> kNoModels;

bool Fail(FirmwareImage::ReadError* error, std::int32_t number, std::string text) {
    if (error) *error = {number, std::move(text)};
    return false;
}

bool ParseNumber(std::string_view text, std::uint64_t& value, int base = 10) {
    text = Text::Trim(text);
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return ec == std::errc() && end == text.data() + text.size() && !text.empty();
}

std::vector<std::string> SplitModels(std::string_view text) {
    std::vector<std::string> models;
    while (!text.empty()) {
        std::size_t comma = text.find(',');
        std::string_view model = Text::Trim(text.substr(0, comma));
        if (!model.empty()) models.emplace_back(model);
        if (comma == std::string_view::npos) break;
        text.remove_prefix(comma + 1);
    }
    return models;
}

std::string Hex8(std::uint32_t value) {
    char text[9];
    std::snprintf(text, sizeof text, "%08X", value);
    return text;
}

// A header value may not hold a line break; anything else is kept.
std::string OneLine(std::string text) {
    for (char& c : text)
        if (c == '\n' || c == '\r') c = ' ';
    return text;
}

}  // namespace

struct FirmwareImage::Data {
    std::string path;
    std::vector<std::string> models;
    std::string version;
    std::string date;
    std::string description;
    std::string payload;
    std::uint32_t payloadCrc = 0;
};

FirmwareImage FirmwareImage::Read(const std::string& path, ReadError* error) {
    const std::string invalid = "Invalid file format";
    auto refuse = [&](const std::string& why) {
        Fail(error, kInvalidFileFormat, invalid + ": " + path + " " + why);
        return FirmwareImage();
    };
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        Fail(error, ErrorNumber::FileNotFound, "File not found");
        return {};
    }
    std::uintmax_t size = std::filesystem::file_size(path, ec);
    if (ec || size > kMaxFile) return refuse("is too large to be a firmware file");
    std::string bytes;
    if (!FileOps::ReadWholeFile(path, bytes)) {
        Fail(error, ErrorNumber::PathFileAccess, "Path/File access error: " + path + " could not be read");
        return {};
    }
    if (bytes.size() < kFixedSize + 4 || bytes.compare(0, 4, kMagic) != 0)
        return refuse("is not a firmware file");
    std::uint16_t format = static_cast<unsigned char>(bytes[4]) | (static_cast<unsigned char>(bytes[5]) << 8);
    if (format != kFormatVersion) return refuse("has a firmware file format this program does not know");
    std::uint32_t headerLength = LinkFrame::GetU32(bytes, 6);
    if (headerLength > kMaxHeader || kFixedSize + headerLength + 4 > bytes.size())
        return refuse("is damaged (its header is cut short)");
    std::uint32_t fileCrc = LinkFrame::GetU32(bytes, bytes.size() - 4);
    if (Crc::Crc32(std::string_view(bytes).substr(0, bytes.size() - 4)) != fileCrc)
        return refuse("is damaged (its checksum does not match)");

    auto data = std::make_shared<Data>();
    data->path = path;
    bool haveSize = false, haveCrc = false;
    std::uint64_t payloadSize = 0;
    std::string_view header(bytes.data() + kFixedSize, headerLength);
    while (!header.empty()) {
        std::size_t end = header.find('\n');
        std::string_view line = header.substr(0, end);
        header.remove_prefix(end == std::string_view::npos ? header.size() : end + 1);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        std::size_t eq = line.find('=');
        if (line.empty() || eq == std::string_view::npos) continue;
        std::string key = Text::ToUpper(Text::Trim(line.substr(0, eq)));
        std::string_view value = Text::Trim(line.substr(eq + 1));
        std::uint64_t number = 0;
        if (key == "MODELS") data->models = SplitModels(value);
        else if (key == "VERSION") data->version = value;
        else if (key == "DATE") data->date = value;
        else if (key == "DESCRIPTION") data->description = value;
        else if (key == "PAYLOAD_SIZE") haveSize = ParseNumber(value, payloadSize);
        else if (key == "PAYLOAD_CRC32" && ParseNumber(value, number, 16) && number <= 0xFFFFFFFFu) {
            data->payloadCrc = static_cast<std::uint32_t>(number);
            haveCrc = true;
        }
    }
    if (data->models.empty()) return refuse("names no logger model");
    if (data->version.empty()) return refuse("has no firmware version");
    if (!haveSize || !haveCrc) return refuse("does not state its payload's size and checksum");
    if (payloadSize != bytes.size() - kFixedSize - headerLength - 4)
        return refuse("is damaged (its payload is not the size it states)");
    data->payload = bytes.substr(kFixedSize + headerLength, payloadSize);
    if (Crc::Crc32(data->payload) != data->payloadCrc) return refuse("is damaged (its payload's checksum does not match)");
    if (error) *error = {};
    FirmwareImage image;
    image.data_ = std::move(data);
    return image;
}

FirmwareImage FirmwareImage::Make(std::vector<std::string> models, std::string version, std::string date,
                                  std::string payload, std::string description) {
    auto data = std::make_shared<Data>();
    data->models = std::move(models);
    data->version = std::move(version);
    data->date = std::move(date);
    data->description = std::move(description);
    data->payloadCrc = Crc::Crc32(payload);
    data->payload = std::move(payload);
    FirmwareImage image;
    image.data_ = std::move(data);
    return image;
}

std::string FirmwareImage::Serialize() const {
    if (!data_) return {};
    std::string models;
    for (const std::string& model : data_->models) models += (models.empty() ? "" : ",") + OneLine(model);
    std::string header = "MODELS=" + models + "\nVERSION=" + OneLine(data_->version) + "\n";
    if (!data_->date.empty()) header += "DATE=" + OneLine(data_->date) + "\n";
    if (!data_->description.empty()) header += "DESCRIPTION=" + OneLine(data_->description) + "\n";
    header += "PAYLOAD_SIZE=" + std::to_string(data_->payload.size()) + "\nPAYLOAD_CRC32=" + Hex8(data_->payloadCrc) + "\n";
    std::string bytes(kMagic, 4);
    bytes.push_back(static_cast<char>(kFormatVersion & 0xFF));
    bytes.push_back(static_cast<char>(kFormatVersion >> 8));
    LinkFrame::PutU32(bytes, static_cast<std::uint32_t>(header.size()));
    bytes += header;
    bytes += data_->payload;
    LinkFrame::PutU32(bytes, Crc::Crc32(bytes));
    return bytes;
}

const std::string& FirmwareImage::Path() const { return data_ ? data_->path : kEmpty; }
const std::vector<std::string>& FirmwareImage::Models() const { return data_ ? data_->models : kNoModels; }
const std::string& FirmwareImage::Version() const { return data_ ? data_->version : kEmpty; }
const std::string& FirmwareImage::Date() const { return data_ ? data_->date : kEmpty; }
const std::string& FirmwareImage::Description() const { return data_ ? data_->description : kEmpty; }
const std::string& FirmwareImage::Payload() const { return data_ ? data_->payload : kEmpty; }
std::uint32_t FirmwareImage::PayloadCrc() const { return data_ ? data_->payloadCrc : 0; }
std::uint64_t FirmwareImage::Size() const { return data_ ? data_->payload.size() : 0; }

bool FirmwareImage::FitsModel(const std::string& model) const {
    if (!data_ || Text::Trim(model).empty()) return false;
    for (const std::string& m : data_->models)
        if (Text::EqualsIgnoreCase(m, Text::Trim(model))) return true;
    return false;
}

bool FirmwareImage::PayloadIntact() const { return data_ && Crc::Crc32(data_->payload) == data_->payloadCrc; }

}  // namespace meridex
