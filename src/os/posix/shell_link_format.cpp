#include "os/posix/shell_link_format.h"

#include <cstring>

#include "os/api/nls.h"

namespace nvk::os::posix {

namespace {

// {00021401-0000-0000-C000-000000000046}, as the header stores it.
constexpr unsigned char kLinkClsid[16] = {0x01, 0x14, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                          0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};
constexpr std::uint32_t kHeaderSize = 0x4C;

// LinkFlags of the header.
constexpr std::uint32_t HasLinkTargetIDList = 0x1;
constexpr std::uint32_t HasLinkInfo = 0x2;
constexpr std::uint32_t HasName = 0x4;
constexpr std::uint32_t HasRelativePath = 0x8;
constexpr std::uint32_t HasWorkingDir = 0x10;
constexpr std::uint32_t HasArguments = 0x20;
constexpr std::uint32_t HasIconLocation = 0x40;
constexpr std::uint32_t IsUnicode = 0x80;

// LinkInfoFlags.
constexpr std::uint32_t VolumeIDAndLocalBasePath = 0x1;
constexpr std::uint32_t CommonNetworkRelativeLinkAndPathSuffix = 0x2;

constexpr std::uint32_t kDriveFixed = 3;
constexpr std::uint32_t kValidNetName = 0x1;

class Writer {
public:
    void U16(std::uint32_t value) { Put(value, 2); }
    void U32(std::uint32_t value) { Put(value, 4); }
    void Bytes(const void* data, std::size_t size) {
        const auto* p = static_cast<const unsigned char*>(data);
        m_Bytes.insert(m_Bytes.end(), p, p + size);
    }
    void Text(const std::string& text) { Bytes(text.c_str(), text.size() + 1); }
    // A counted UTF-16 string of StringData.
    void Counted(const std::string& text) {
        std::u16string wide(text.size(), u'\0');
        if (!text.empty()) {
            MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()),
                                reinterpret_cast<LPWSTR>(wide.data()),
                                static_cast<int>(wide.size()));
        }
        U16(static_cast<std::uint32_t>(wide.size()));
        for (char16_t unit : wide) {
            U16(unit);
        }
    }
    std::size_t Size() const { return m_Bytes.size(); }
    void PatchU32(std::size_t at, std::uint32_t value) {
        for (int i = 0; i < 4; ++i) {
            m_Bytes[at + static_cast<std::size_t>(i)] =
                static_cast<unsigned char>(value >> (8 * i));
        }
    }
    std::vector<unsigned char> Take() { return std::move(m_Bytes); }

private:
    void Put(std::uint32_t value, int width) {
        for (int i = 0; i < width; ++i) {
            m_Bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
        }
    }
    std::vector<unsigned char> m_Bytes;
};

class Reader {
public:
    explicit Reader(std::string_view bytes) : m_Bytes(bytes) {}
    bool Has(std::size_t at, std::size_t size) const {
        return at <= m_Bytes.size() && size <= m_Bytes.size() - at;
    }
    std::uint32_t U(std::size_t at, int width) const {
        std::uint32_t value = 0;
        for (int i = width - 1; i >= 0; --i) {
            value = (value << 8) |
                    static_cast<unsigned char>(m_Bytes[at + static_cast<std::size_t>(i)]);
        }
        return value;
    }
    // A zero-terminated ANSI text at `at`, not beyond `end`.
    bool Text(std::size_t at, std::size_t end, std::string& out) const {
        if (at >= end) {
            return false;
        }
        const std::size_t stop = m_Bytes.find('\0', at);
        if (stop == std::string_view::npos || stop >= end) {
            return false;
        }
        out.assign(m_Bytes.substr(at, stop - at));
        return true;
    }
    std::string_view Bytes() const { return m_Bytes; }

private:
    std::string_view m_Bytes;
};

// The root of a Windows path: "C:\" for a drive, "\\server\share" for a
// share; empty for anything else.
std::string ShareOf(const std::string& path) {
    if (path.size() < 2 || path[0] != '\\' || path[1] != '\\') {
        return {};
    }
    const std::size_t server = path.find('\\', 2);
    if (server == std::string::npos) {
        return {};
    }
    const std::size_t share = path.find('\\', server + 1);
    return share == std::string::npos ? path : path.substr(0, share);
}

void WriteLinkInfo(Writer& out, const std::string& path) {
    const std::size_t start = out.Size();
    const std::string share = ShareOf(path);
    constexpr std::uint32_t kInfoHeader = 0x1C;
    out.U32(0);  // size, patched below
    out.U32(kInfoHeader);
    if (share.empty()) {
        // A fixed drive of no label and no serial number, then the path.
        constexpr std::uint32_t kVolumeSize = 0x10 + 1;
        out.U32(VolumeIDAndLocalBasePath);
        out.U32(kInfoHeader);                // VolumeIDOffset
        out.U32(kInfoHeader + kVolumeSize);  // LocalBasePathOffset
        out.U32(0);                          // CommonNetworkRelativeLinkOffset
        out.U32(kInfoHeader + kVolumeSize + static_cast<std::uint32_t>(path.size()) + 1);
        out.U32(kVolumeSize);
        out.U32(kDriveFixed);
        out.U32(0);     // serial number
        out.U32(0x10);  // VolumeLabelOffset
        out.Text("");
        out.Text(path);
        out.Text("");  // CommonPathSuffix
    } else {
        // The share as the network location, the rest as the suffix.
        const std::string suffix = path.size() > share.size() ? path.substr(share.size() + 1) : "";
        const auto linkSize = static_cast<std::uint32_t>(0x14 + share.size() + 1 + 1);
        out.U32(CommonNetworkRelativeLinkAndPathSuffix);
        out.U32(0);            // VolumeIDOffset
        out.U32(0);            // LocalBasePathOffset
        out.U32(kInfoHeader);  // CommonNetworkRelativeLinkOffset
        out.U32(kInfoHeader + linkSize);
        out.U32(linkSize);
        out.U32(kValidNetName);
        out.U32(0x14);  // NetNameOffset
        out.U32(0);     // DeviceNameOffset
        out.U32(0);     // NetworkProviderType
        out.Text(share);
        out.Text("");  // device name, unused
        out.Text(suffix);
    }
    out.PatchU32(start, static_cast<std::uint32_t>(out.Size() - start));
}

bool ReadLinkInfo(const Reader& in, std::size_t at, std::size_t end, std::string& path) {
    const std::uint32_t flags = in.U(at + 8, 4);
    std::string suffix;
    if (!in.Text(at + in.U(at + 24, 4), end, suffix)) {
        return false;
    }
    if ((flags & VolumeIDAndLocalBasePath) != 0) {
        if (!in.Text(at + in.U(at + 16, 4), end, path)) {
            return false;
        }
    } else if ((flags & CommonNetworkRelativeLinkAndPathSuffix) != 0) {
        const std::size_t link = at + in.U(at + 20, 4);
        if (!in.Has(link, 12) || link + 12 > end || !in.Text(link + in.U(link + 8, 4), end, path)) {
            return false;
        }
        if (!suffix.empty()) {
            path += '\\';
        }
    }
    path += suffix;
    return true;
}

}  // namespace

std::vector<unsigned char> WriteShellLink(const LinkData& link) {
    std::uint32_t flags = IsUnicode | (link.Path.empty() ? 0 : HasLinkInfo);
    flags |= link.Description.empty() ? 0 : HasName;
    flags |= link.RelativePath.empty() ? 0 : HasRelativePath;
    flags |= link.WorkingDirectory.empty() ? 0 : HasWorkingDir;
    flags |= link.Arguments.empty() ? 0 : HasArguments;
    flags |= link.IconPath.empty() ? 0 : HasIconLocation;

    Writer out;
    out.U32(kHeaderSize);
    out.Bytes(kLinkClsid, sizeof kLinkClsid);
    out.U32(flags);
    out.U32(link.FileAttributes);
    for (const FILETIME& time : {link.CreationTime, link.AccessTime, link.WriteTime}) {
        out.U32(time.dwLowDateTime);
        out.U32(time.dwHighDateTime);
    }
    out.U32(link.FileSize);
    out.U32(static_cast<std::uint32_t>(link.IconIndex));
    out.U32(static_cast<std::uint32_t>(link.ShowCommand));
    out.U16(link.HotKey);
    out.U16(0);
    out.U32(0);
    out.U32(0);
    if ((flags & HasLinkInfo) != 0) {
        WriteLinkInfo(out, link.Path);
    }
    for (const std::string* text : {&link.Description, &link.RelativePath, &link.WorkingDirectory,
                                    &link.Arguments, &link.IconPath}) {
        if (!text->empty()) {
            out.Counted(*text);
        }
    }
    out.U32(0);  // the terminal block
    return out.Take();
}

bool ReadShellLink(std::string_view bytes, LinkData& link) {
    const Reader in(bytes);
    if (!in.Has(0, kHeaderSize) || in.U(0, 4) != kHeaderSize ||
        std::memcmp(bytes.data() + 4, kLinkClsid, sizeof kLinkClsid) != 0) {
        return false;
    }
    link = LinkData{};
    const std::uint32_t flags = in.U(20, 4);
    link.FileAttributes = in.U(24, 4);
    FILETIME* times[] = {&link.CreationTime, &link.AccessTime, &link.WriteTime};
    for (std::size_t i = 0; i < 3; ++i) {
        times[i]->dwLowDateTime = in.U(28 + 8 * i, 4);
        times[i]->dwHighDateTime = in.U(32 + 8 * i, 4);
    }
    link.FileSize = in.U(52, 4);
    link.IconIndex = static_cast<int>(in.U(56, 4));
    link.ShowCommand = static_cast<int>(in.U(60, 4));
    link.HotKey = static_cast<WORD>(in.U(64, 2));

    std::size_t at = kHeaderSize;
    if ((flags & HasLinkTargetIDList) != 0) {
        if (!in.Has(at, 2)) {
            return false;
        }
        at += 2 + in.U(at, 2);
    }
    if ((flags & HasLinkInfo) != 0) {
        if (!in.Has(at, 28)) {
            return false;
        }
        const std::size_t size = in.U(at, 4);
        if (size < 28 || !in.Has(at, size) || !ReadLinkInfo(in, at, at + size, link.Path)) {
            return false;
        }
        at += size;
    }
    std::string* texts[] = {&link.Description, &link.RelativePath, &link.WorkingDirectory,
                            &link.Arguments, &link.IconPath};
    const std::uint32_t textFlags[] = {HasName, HasRelativePath, HasWorkingDir, HasArguments,
                                       HasIconLocation};
    const std::size_t unit = (flags & IsUnicode) != 0 ? 2 : 1;
    for (std::size_t i = 0; i < 5; ++i) {
        if ((flags & textFlags[i]) == 0) {
            continue;
        }
        if (!in.Has(at, 2)) {
            return false;
        }
        const std::size_t count = in.U(at, 2);
        at += 2;
        if (!in.Has(at, count * unit)) {
            return false;
        }
        if (unit == 1) {
            texts[i]->assign(bytes.substr(at, count));
        } else if (count > 0) {
            std::u16string wide(count, u'\0');
            for (std::size_t k = 0; k < count; ++k) {
                wide[k] = static_cast<char16_t>(in.U(at + 2 * k, 2));
            }
            const int size =
                WideCharToMultiByte(CP_ACP, 0, reinterpret_cast<LPCWSTR>(wide.data()),
                                    static_cast<int>(count), nullptr, 0, nullptr, nullptr);
            texts[i]->assign(static_cast<std::size_t>(size), '\0');
            WideCharToMultiByte(CP_ACP, 0, reinterpret_cast<LPCWSTR>(wide.data()),
                                static_cast<int>(count), texts[i]->data(), size, nullptr, nullptr);
        }
        at += count * unit;
    }
    return true;
}

}  // namespace nvk::os::posix
