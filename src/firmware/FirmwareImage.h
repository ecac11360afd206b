#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace meridex {

/// A firmware file (docs/firmware-file-format.md): the models it fits, its
/// version and date, and its payload with the payload's CRC-32. A cheap
/// copyable handle; a file that could not be read is a null image.
class MERIDEX_EXPORT FirmwareImage {
public:
    /// Why a file was refused: error 53 "File not found", or 321 "Invalid file format" with the reason.
    struct ReadError {
        std::int32_t number = 0;    ///< 0 when the file was read
        std::string description;    ///< for a person, naming the fault
    };

    /// Error number of a damaged or foreign file.
    static constexpr std::int32_t kInvalidFileFormat = 321;
    /// The file name extension of firmware files, matched ignoring case.
    static constexpr const char* kExtension = ".mxfw";

    /// A null image.
    FirmwareImage() = default;
    /// Reads and checks a whole file; a null image (and error filled) when it is missing, damaged or not a firmware file.
    static FirmwareImage Read(const std::string& path, ReadError* error = nullptr);
    /// An image made in memory, for writing a firmware file.
    static FirmwareImage Make(std::vector<std::string> models, std::string version, std::string date,
                              std::string payload, std::string description = {});
    /// The file's bytes, as Read reads them.
    std::string Serialize() const;

    /// True for the image of no file.
    bool IsNull() const noexcept { return !data_; }
    /// The file it was read from ("" for an image made in memory).
    const std::string& Path() const;
    /// The models the image fits, as the file lists them.
    const std::vector<std::string>& Models() const;
    /// Its firmware version ("2.4.1").
    const std::string& Version() const;
    /// Its release date, "YYYY-MM-DD" (may be empty).
    const std::string& Date() const;
    /// Free text from the file.
    const std::string& Description() const;
    /// The bytes the logger receives.
    const std::string& Payload() const;
    /// CRC-32 of the payload, as the file states it (checked on reading).
    std::uint32_t PayloadCrc() const;
    /// The payload's size in bytes.
    std::uint64_t Size() const;
    /// True when model is one of the image's models (ignoring case).
    bool FitsModel(const std::string& model) const;
    /// True when the payload matches its stated size and CRC-32.
    bool PayloadIntact() const;

private:
    struct Data;
    std::shared_ptr<const Data> data_;
};

}  // namespace meridex
