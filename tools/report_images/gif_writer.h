// gif_writer.h -- a small GIF encoder for the report's images: one image,
// a global colour table, LZW-compressed pixels, and the knobs that bring the
// file to an exact byte size without changing the picture.
#ifndef VEMCOV_TOOLS_GIF_WRITER_H
#define VEMCOV_TOOLS_GIF_WRITER_H

#include <cstdint>
#include <string>
#include <vector>

namespace gifmake {

struct Rgb {
    uint8_t r, g, b;
};

struct GifPicture {
    bool gif89a = true;           // GIF89a (extensions allowed) or GIF87a
    int width = 0;
    int height = 0;
    std::vector<Rgb> palette;     // the colours used; the table is padded with black
    int tableBits = 1;            // the global table has 1 << tableBits entries
    int transparent = -1;         // transparent index (GIF89a), or -1
    std::vector<uint8_t> pixels;  // width * height palette indices, row by row
    int minCodeSize = 2;          // LZW minimum code size (2..8)
    std::string comment;          // comment extension (GIF89a); empty: none
    int clearEvery = 0;           // emit a clear code after this many data codes; 0: only when full
    int extraSubBlocks = 0;       // split the data into this many more sub-blocks than needed
};

// The complete GIF file.
std::vector<uint8_t> EncodeGif(const GifPicture &picture);

// Decodes the LZW data of a file written by EncodeGif back into palette
// indices (a check of the encoder, independent of the bit packing details
// it shares with nothing else). Returns false on a malformed stream.
bool DecodeGifPixels(const std::vector<uint8_t> &file, std::vector<uint8_t> *pixels);

}  // namespace gifmake

#endif
