// make_report_images -- writes report/image_data.cpp, the byte tables of the
// report's four images, from the pictures of pictures.cpp.
//
//   make_report_images OUT.cpp          write the tables
//   make_report_images --check FILE     exit 1 unless FILE is what would be written
//   make_report_images --gifs DIR       also write the four .gif files into DIR
//
// Each image has a fixed byte size. The pixels are encoded as they are, and
// the file is brought to its size by padding that leaves the picture alone:
// a comment extension in the GIF89a images; in the GIF87a logo, which
// cannot carry extensions, clear codes emitted more often than needed and,
// for any bytes still missing, single-byte sub-blocks.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "gif_writer.h"
#include "pictures.h"

using namespace gifmake;

namespace {

[[noreturn]] void Fail(const std::string &message)
{
    fprintf(stderr, "make_report_images: %s\n", message.c_str());
    exit(2);
}

// Brings a GIF89a picture to `size` bytes with a comment made of `text`
// padded with blanks, plus extra sub-blocks for the last one or two bytes.
std::vector<uint8_t> FitWithComment(GifPicture picture, const std::string &text, size_t size)
{
    picture.comment.clear();
    const size_t bare = EncodeGif(picture).size();
    if (bare > size)
        Fail("picture too large: " + std::to_string(bare) + " > " + std::to_string(size));
    for (int extra = 0; extra < 4; ++extra) {
        picture.extraSubBlocks = extra;
        picture.comment.clear();
        size_t withExtra = EncodeGif(picture).size();
        if (withExtra == size)
            return EncodeGif(picture);
        // A comment of n bytes (n <= 255) costs n + 4 bytes.
        if (withExtra + 5 <= size && size - withExtra - 4 <= 255) {
            size_t length = size - withExtra - 4;
            std::string comment = text.substr(0, length);
            comment.resize(length, ' ');
            picture.comment = comment;
            std::vector<uint8_t> file = EncodeGif(picture);
            if (file.size() == size)
                return file;
        }
    }
    Fail("cannot pad to " + std::to_string(size));
}

// Brings a GIF87a picture to `size` bytes. Of the minimum code sizes the
// table allows and the clear intervals (0: clear only when the code table is
// full), the pair that leaves the fewest bytes to fill is taken; the rest is
// filled by cutting single-byte sub-blocks off the front of the data.
std::vector<uint8_t> FitWithSubBlocks(GifPicture picture, size_t size)
{
    size_t bestSize = 0;
    GifPicture best = picture;
    for (int codeSize = picture.minCodeSize; codeSize <= 8; ++codeSize) {
        picture.minCodeSize = codeSize;
        for (int clearEvery = 0; clearEvery <= 2000; clearEvery = clearEvery == 0 ? 16 : clearEvery + 1) {
            picture.clearEvery = clearEvery;
            picture.extraSubBlocks = 0;
            size_t encoded = EncodeGif(picture).size();
            if (encoded <= size && encoded > bestSize) {
                bestSize = encoded;
                best = picture;
            }
        }
    }
    if (bestSize == 0)
        Fail("logo too large");
    for (int extra = 0; extra < 1000; ++extra) {
        best.extraSubBlocks = extra;
        std::vector<uint8_t> file = EncodeGif(best);
        if (file.size() == size)
            return file;
        if (file.size() > size)
            break;
    }
    Fail("cannot pad the logo to " + std::to_string(size));
}

void Verify(const char *name, const GifPicture &picture, const std::vector<uint8_t> &file)
{
    std::vector<uint8_t> pixels;
    if (!DecodeGifPixels(file, &pixels) || pixels != picture.pixels)
        Fail(std::string(name) + " does not decode to its pixels");
}

void PutTable(std::ostringstream &out, const char *name, const std::vector<uint8_t> &bytes,
              size_t from, size_t to)
{
    out << "const unsigned char " << name << "[" << (to - from) << "] = {";
    for (size_t i = from; i < to; ++i) {
        if ((i - from) % 12 == 0)
            out << "\n   ";
        char hex[8];
        snprintf(hex, sizeof hex, " 0x%02X,", bytes[i]);
        out << hex;
    }
    out << "\n};\n\n";
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 2 && argc != 3) {
        fprintf(stderr, "usage: make_report_images OUT.cpp | --check FILE | --gifs DIR\n");
        return 2;
    }

    GifPicture home = HomePicture();
    GifPicture help = HelpPicture();
    GifPicture logo = LogoPicture();
    GifPicture spacer = SpacerPicture();
    std::vector<uint8_t> homeGif = FitWithComment(home, "vemcov: back to the coverage summary", 977);
    std::vector<uint8_t> helpGif = FitWithComment(help, "vemcov: on-line help", 187);
    logo.tableBits = 8;
    std::vector<uint8_t> logoGif = FitWithSubBlocks(logo, 1414);
    std::vector<uint8_t> spacerGif = EncodeGif(spacer);
    if (spacerGif.size() != 43)
        Fail("spacer is not 43 bytes");
    Verify("home", home, homeGif);
    Verify("help", help, helpGif);
    Verify("logo", logo, logoGif);
    Verify("spacer", spacer, spacerGif);

    // The home image keeps only its ends: bytes 76 to 780, the black tail of
    // its colour table, are zeros that the writer produces by a loop.
    const size_t homeHead = 76, homeZeros = 705;
    for (size_t i = homeHead; i < homeHead + homeZeros; ++i) {
        if (homeGif[i] != 0)
            Fail("home image byte " + std::to_string(i) + " is not zero");
    }
    if (homeGif[homeHead - 1] == 0 || homeGif[homeHead + homeZeros] == 0)
        Fail("the zero run of the home image is longer than 705 bytes");

    std::ostringstream out;
    out << "/* image_data.cpp -- the four images of the report as byte tables.\n"
           " *\n"
           " * Written by tools/report_images/make_report_images from the pictures\n"
           " * drawn in tools/report_images/pictures.cpp; regenerate rather than edit.\n"
           " */\n"
           "#include \"report/image_data.h\"\n\n"
           "/* __Home.gif, a house: GIF89a, 19 x 20, 977 bytes. Bytes 76 to 780 are\n"
           " * zeros (the unused black entries of its 256-colour table). */\n";
    PutTable(out, "HOME_GIF_HEAD", homeGif, 0, homeHead);
    PutTable(out, "HOME_GIF_TAIL", homeGif, homeHead + homeZeros, homeGif.size());
    out << "/* __Help.gif, a question mark: GIF89a, 19 x 20, 187 bytes. */\n";
    PutTable(out, "HELP_GIF", helpGif, 0, helpGif.size());
    out << "/* __TarskR.gif, the maker's logo: GIF87a, 66 x 45, 1414 bytes. */\n";
    PutTable(out, "LOGO_GIF", logoGif, 0, logoGif.size());
    out << "/* __Spacer.gif, one transparent pixel: GIF89a, 1 x 1, 43 bytes. */\n";
    PutTable(out, "SPACER_GIF", spacerGif, 0, spacerGif.size());
    std::string text = out.str();
    text.resize(text.size() - 1);  // no blank line at the end

    if (strcmp(argv[1], "--check") == 0 && argc == 3) {
        std::ifstream in(argv[2], std::ios::binary);
        std::stringstream existing;
        existing << in.rdbuf();
        if (existing.str() != text) {
            fprintf(stderr, "%s differs from the generated tables\n", argv[2]);
            return 1;
        }
        return 0;
    }
    if (strcmp(argv[1], "--gifs") == 0 && argc == 3) {
        const std::pair<const char *, const std::vector<uint8_t> *> files[] = {
            {"__Home.gif", &homeGif}, {"__Help.gif", &helpGif},
            {"__TarskR.gif", &logoGif}, {"__Spacer.gif", &spacerGif}};
        for (const auto &file : files) {
            std::ofstream gif(std::string(argv[2]) + "/" + file.first, std::ios::binary);
            gif.write(reinterpret_cast<const char *>(file.second->data()), file.second->size());
        }
        return 0;
    }
    std::ofstream file(argv[1], std::ios::binary);
    file << text;
    return file ? 0 : 1;
}
