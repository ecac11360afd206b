#include <meridex/platform/windows/WindowsFiles.h>

#include <libxml/encoding.h>

#include <string>
#include <string_view>

#include <meridex/frame/Text.h>

// libxml2 is built here without iconv: it reads and writes windows-1252
// documents through the library's own table instead.
namespace meridex::Windows {
namespace {

int FromWindows1252(unsigned char* out, int* outlen, const unsigned char* in, int* inlen) {
    int read = 0;
    int written = 0;
    while (read < *inlen) {
        const std::string utf8 = Text::FromWindows1252(std::string_view(reinterpret_cast<const char*>(in) + read, 1));
        if (written + static_cast<int>(utf8.size()) > *outlen) break;
        for (char c : utf8) out[written++] = static_cast<unsigned char>(c);
        ++read;
    }
    *inlen = read;
    *outlen = written;
    return written;
}

// The length of the UTF-8 sequence a lead byte starts (1 for a stray byte).
int SequenceLength(unsigned char lead) {
    if (lead >= 0xF0) return 4;
    if (lead >= 0xE0) return 3;
    if (lead >= 0xC0) return 2;
    return 1;
}

int ToWindows1252(unsigned char* out, int* outlen, const unsigned char* in, int* inlen) {
    if (!in) {  // the end of the output: nothing held back
        *outlen = 0;
        return 0;
    }
    int read = 0;
    int written = 0;
    while (read < *inlen && written < *outlen) {
        const int length = SequenceLength(in[read]);
        if (read + length > *inlen) break;  // the rest comes with the next call
        const std::string_view utf8(reinterpret_cast<const char*>(in) + read, static_cast<std::size_t>(length));
        const std::string byte = Text::ToWindows1252(utf8);
        // A character the code page lacks: libxml2 writes a character reference instead.
        if (byte.size() != 1 || Text::FromWindows1252(byte) != utf8) {
            *inlen = read;
            *outlen = written;
            return -2;
        }
        out[written++] = static_cast<unsigned char>(byte[0]);
        read += length;
    }
    *inlen = read;
    *outlen = written;
    return written;
}

}  // namespace

void RegisterWindows1252Encoding() {
    static const bool registered = [] {
        xmlNewCharEncodingHandler("windows-1252", FromWindows1252, ToWindows1252);
        xmlAddEncodingAlias("windows-1252", "cp1252");
        return true;
    }();
    (void)registered;
}

}  // namespace meridex::Windows
