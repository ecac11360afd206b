#pragma once
#include <meridex/Export.h>
#include <string>
#include <vector>

#include <meridex/firmware/FirmwareImage.h>

namespace meridex {

/// The firmware files of a folder (every "*.mxfw" file, matched ignoring
/// case, sub-folders not searched), or one chosen file. Every file is read
/// and checked when scanned, so damaged and foreign files are known before
/// anything is offered.
class MERIDEX_EXPORT FirmwareFolder {
public:
    /// A file that was refused, and why.
    struct Refusal {
        std::string path;                  ///< the file
        FirmwareImage::ReadError error;    ///< its error number and description
    };
    /// A file offered for a logger.
    struct Offer {
        FirmwareImage image;   ///< the file
        int comparison = 0;    ///< its version against the running one: < 0 older, 0 the same, > 0 newer
        /// True when the image holds the version the logger is running.
        bool Running() const noexcept { return comparison == 0; }
    };

    /// Scans path: a folder, or a single firmware file.
    explicit FirmwareFolder(std::string path);

    /// The folder or file scanned.
    const std::string& Path() const noexcept { return path_; }
    /// False when the path is neither a folder nor a file.
    bool Exists() const noexcept { return exists_; }
    /// The files that were read, in name order.
    const std::vector<FirmwareImage>& Images() const noexcept { return images_; }
    /// The files that were refused, in name order.
    const std::vector<Refusal>& Refused() const noexcept { return refused_; }
    /// The images that fit model, newest first (then latest date, then name),
    /// each compared with runningVersion.
    std::vector<Offer> OffersFor(const std::string& model, const std::string& runningVersion) const;

private:
    std::string path_;
    bool exists_ = false;
    std::vector<FirmwareImage> images_;
    std::vector<Refusal> refused_;
};

}  // namespace meridex
