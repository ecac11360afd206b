#include <meridex/firmware/FirmwareFolder.h>

#include <algorithm>
#include <filesystem>

#include <meridex/firmware/FirmwareVersion.h>
#include <meridex/frame/Text.h>

namespace meridex {

FirmwareFolder::FirmwareFolder(std::string path) : path_(std::move(path)) {
    namespace fs = std::filesystem;
    std::error_code ec;
    std::vector<std::string> files;
    if (fs::is_directory(path_, ec)) {
        exists_ = true;
        for (fs::directory_iterator it(path_, ec), end; !ec && it != end; it.increment(ec)) {
            std::string name = it->path().filename().string();
            std::string ext = it->path().extension().string();
            if (Text::EqualsIgnoreCase(ext, FirmwareImage::kExtension) && it->is_regular_file(ec))
                files.push_back(it->path().string());
        }
        std::sort(files.begin(), files.end());
    } else if (fs::exists(path_, ec)) {
        exists_ = true;
        files.push_back(path_);
    }
    for (const std::string& file : files) {
        FirmwareImage::ReadError error;
        FirmwareImage image = FirmwareImage::Read(file, &error);
        if (image.IsNull()) refused_.push_back({file, error});
        else images_.push_back(std::move(image));
    }
}

std::vector<FirmwareFolder::Offer> FirmwareFolder::OffersFor(const std::string& model,
                                                             const std::string& runningVersion) const {
    std::vector<Offer> offers;
    for (const FirmwareImage& image : images_)
        if (image.FitsModel(model))
            offers.push_back({image, runningVersion.empty() ? 1 : FirmwareVersion::Compare(image.Version(), runningVersion)});
    std::stable_sort(offers.begin(), offers.end(), [](const Offer& a, const Offer& b) {
        int c = FirmwareVersion::Compare(a.image.Version(), b.image.Version());
        if (c != 0) return c > 0;
        if (a.image.Date() != b.image.Date()) return a.image.Date() > b.image.Date();
        return a.image.Path() < b.image.Path();
    });
    return offers;
}

}  // namespace meridex
