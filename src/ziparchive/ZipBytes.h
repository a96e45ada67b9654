#pragma once

#include <cstdint>

// Little-endian field access for the fixed-size records of the archive format.
namespace zipbytes {

inline uint16_t Get16(const unsigned char* p)
{
    return uint16_t(p[0] | (p[1] << 8));
}
inline uint32_t Get32(const unsigned char* p)
{
    return uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
}
inline void Put16(unsigned char* p, uint16_t v)
{
    p[0] = uint8_t(v);
    p[1] = uint8_t(v >> 8);
}
inline void Put32(unsigned char* p, uint32_t v)
{
    p[0] = uint8_t(v);
    p[1] = uint8_t(v >> 8);
    p[2] = uint8_t(v >> 16);
    p[3] = uint8_t(v >> 24);
}

constexpr uint32_t kLocalHeaderSignature = 0x04034b50;
constexpr uint32_t kCentralHeaderSignature = 0x02014b50;
constexpr uint32_t kEndRecordSignature = 0x06054b50;
constexpr uint32_t kDataDescriptorSignature = 0x08074b50;

constexpr int kLocalHeaderSize = 30;
constexpr int kCentralHeaderSize = 46;
constexpr int kEndRecordSize = 22;

}  // namespace zipbytes
