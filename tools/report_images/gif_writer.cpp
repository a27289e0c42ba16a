// gif_writer.cpp -- GIF encoding (LZW, sub-blocks) and a decoder to check it.
#include "gif_writer.h"

#include <unordered_map>

namespace gifmake {

namespace {

const int kMaxCode = 4095;  // the largest 12-bit code

void PutU16(std::vector<uint8_t> &out, int value)
{
    out.push_back(static_cast<uint8_t>(value & 0xFF));
    out.push_back(static_cast<uint8_t>((value >> 8) & 0xFF));
}

// Packs codes least significant bit first.
class BitPacker {
public:
    void Put(int code, int bits)
    {
        accumulator_ |= static_cast<uint32_t>(code) << used_;
        used_ += bits;
        while (used_ >= 8) {
            bytes_.push_back(static_cast<uint8_t>(accumulator_ & 0xFF));
            accumulator_ >>= 8;
            used_ -= 8;
        }
    }
    std::vector<uint8_t> Finish()
    {
        if (used_ > 0)
            bytes_.push_back(static_cast<uint8_t>(accumulator_ & 0xFF));
        used_ = 0;
        accumulator_ = 0;
        return bytes_;
    }

private:
    uint32_t accumulator_ = 0;
    int used_ = 0;
    std::vector<uint8_t> bytes_;
};

// LZW as GIF decoders expect it: the code width grows after a code is
// written once the next free code no longer fits, and the table is reset by
// a clear code when it is full (or every `clearEvery` codes, to make the
// data longer without changing the pixels).
std::vector<uint8_t> CompressLzw(const std::vector<uint8_t> &pixels, int minCodeSize, int clearEvery)
{
    const int clearCode = 1 << minCodeSize;
    const int eoiCode = clearCode + 1;
    BitPacker packer;
    std::unordered_map<int, int> table;  // (prefix << 8 | pixel) -> code
    int runningCode = eoiCode + 1;
    int runningBits = minCodeSize + 1;
    int maxCode1 = 1 << runningBits;
    int codesSinceClear = 0;

    auto output = [&](int code) {
        packer.Put(code, runningBits);
        if (runningCode >= maxCode1 && code <= kMaxCode && runningBits < 12) {
            ++runningBits;
            maxCode1 = 1 << runningBits;
        }
    };
    auto reset = [&]() {
        output(clearCode);
        table.clear();
        runningCode = eoiCode + 1;
        runningBits = minCodeSize + 1;
        maxCode1 = 1 << runningBits;
        codesSinceClear = 0;
    };

    reset();
    if (pixels.empty()) {
        output(eoiCode);
        return packer.Finish();
    }
    int current = pixels[0];
    for (size_t i = 1; i < pixels.size(); ++i) {
        int pixel = pixels[i];
        auto found = table.find(current << 8 | pixel);
        if (found != table.end()) {
            current = found->second;
            continue;
        }
        output(current);
        ++codesSinceClear;
        if (runningCode >= kMaxCode || (clearEvery > 0 && codesSinceClear >= clearEvery)) {
            reset();
        } else {
            table[current << 8 | pixel] = runningCode++;
        }
        current = pixel;
    }
    output(current);
    output(eoiCode);
    return packer.Finish();
}

// Splits data into sub-blocks: as many 255-byte blocks as needed, then
// `extra` more by taking single bytes off the front.
void PutSubBlocks(std::vector<uint8_t> &out, const std::vector<uint8_t> &data, int extra)
{
    size_t position = 0;
    for (int i = 0; i < extra && position < data.size(); ++i) {
        out.push_back(1);
        out.push_back(data[position++]);
    }
    while (position < data.size()) {
        size_t length = data.size() - position;
        if (length > 255)
            length = 255;
        out.push_back(static_cast<uint8_t>(length));
        out.insert(out.end(), data.begin() + position, data.begin() + position + length);
        position += length;
    }
    out.push_back(0);
}

}  // namespace

std::vector<uint8_t> EncodeGif(const GifPicture &picture)
{
    std::vector<uint8_t> out;
    const char *signature = picture.gif89a ? "GIF89a" : "GIF87a";
    for (int i = 0; i < 6; ++i)
        out.push_back(static_cast<uint8_t>(signature[i]));

    // Logical screen descriptor with a global colour table.
    PutU16(out, picture.width);
    PutU16(out, picture.height);
    out.push_back(static_cast<uint8_t>(0x80 | ((picture.tableBits - 1) << 4) | (picture.tableBits - 1)));
    out.push_back(0);  // background colour index
    out.push_back(0);  // no aspect ratio
    const int entries = 1 << picture.tableBits;
    for (int i = 0; i < entries; ++i) {
        Rgb colour = i < static_cast<int>(picture.palette.size()) ? picture.palette[i] : Rgb{0, 0, 0};
        out.push_back(colour.r);
        out.push_back(colour.g);
        out.push_back(colour.b);
    }

    if (picture.gif89a && !picture.comment.empty()) {
        out.push_back(0x21);
        out.push_back(0xFE);
        std::vector<uint8_t> text(picture.comment.begin(), picture.comment.end());
        PutSubBlocks(out, text, 0);
    }
    if (picture.gif89a && picture.transparent >= 0) {
        // Graphic control extension: transparency, no delay.
        const uint8_t control[] = {0x21, 0xF9, 0x04, 0x01, 0x00, 0x00,
                                   static_cast<uint8_t>(picture.transparent), 0x00};
        out.insert(out.end(), control, control + sizeof control);
    }

    // Image descriptor: the whole screen, no local table, not interlaced.
    out.push_back(0x2C);
    PutU16(out, 0);
    PutU16(out, 0);
    PutU16(out, picture.width);
    PutU16(out, picture.height);
    out.push_back(0);

    out.push_back(static_cast<uint8_t>(picture.minCodeSize));
    PutSubBlocks(out, CompressLzw(picture.pixels, picture.minCodeSize, picture.clearEvery),
                 picture.extraSubBlocks);
    out.push_back(0x3B);
    return out;
}

namespace {

// Reads sub-blocks from `position` up to the terminator; appends their bytes.
bool ReadSubBlocks(const std::vector<uint8_t> &file, size_t *position, std::vector<uint8_t> *data)
{
    while (*position < file.size()) {
        size_t length = file[(*position)++];
        if (length == 0)
            return true;
        if (*position + length > file.size())
            return false;
        if (data != nullptr)
            data->insert(data->end(), file.begin() + *position, file.begin() + *position + length);
        *position += length;
    }
    return false;
}

}  // namespace

bool DecodeGifPixels(const std::vector<uint8_t> &file, std::vector<uint8_t> *pixels)
{
    if (file.size() < 13)
        return false;
    size_t position = 13;
    if (file[10] & 0x80)
        position += 3u * (1u << ((file[10] & 7) + 1));
    // Skip extensions up to the image descriptor.
    while (position < file.size() && file[position] == 0x21) {
        position += 2;
        if (!ReadSubBlocks(file, &position, nullptr))
            return false;
    }
    if (position + 11 > file.size() || file[position] != 0x2C)
        return false;
    const int width = file[position + 5] | file[position + 6] << 8;
    const int height = file[position + 7] | file[position + 8] << 8;
    if (file[position + 9] & 0x80)
        return false;  // no local tables are written
    position += 10;
    const int minCodeSize = file[position++];
    std::vector<uint8_t> data;
    if (!ReadSubBlocks(file, &position, &data))
        return false;

    const int clearCode = 1 << minCodeSize;
    const int eoiCode = clearCode + 1;
    std::vector<std::vector<uint8_t>> strings;
    auto resetTable = [&]() {
        strings.assign(eoiCode + 1, {});
        for (int i = 0; i < clearCode; ++i)
            strings[i] = {static_cast<uint8_t>(i)};
    };
    resetTable();
    int bits = minCodeSize + 1;
    int previous = -1;
    size_t bitPosition = 0;
    pixels->clear();
    for (;;) {
        if (bitPosition + bits > data.size() * 8)
            return false;
        int code = 0;
        for (int i = 0; i < bits; ++i, ++bitPosition) {
            if (data[bitPosition / 8] >> (bitPosition % 8) & 1)
                code |= 1 << i;
        }
        if (code == clearCode) {
            resetTable();
            bits = minCodeSize + 1;
            previous = -1;
            continue;
        }
        if (code == eoiCode)
            break;
        std::vector<uint8_t> entry;
        if (code < static_cast<int>(strings.size()) && (code < clearCode || code > eoiCode)) {
            entry = strings[code];
        } else if (code == static_cast<int>(strings.size()) && previous >= 0) {
            entry = strings[previous];
            entry.push_back(strings[previous][0]);
        } else {
            return false;
        }
        pixels->insert(pixels->end(), entry.begin(), entry.end());
        if (previous >= 0 && strings.size() <= static_cast<size_t>(kMaxCode)) {
            std::vector<uint8_t> added = strings[previous];
            added.push_back(entry[0]);
            strings.push_back(added);
            if (strings.size() == (1u << bits) && bits < 12)
                ++bits;
        }
        previous = code;
    }
    return static_cast<int>(pixels->size()) == width * height;
}

}  // namespace gifmake
