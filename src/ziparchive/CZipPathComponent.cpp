#include "ziparchive/CZipPathComponent.h"

#include "ziparchive/ZipPlatform.h"

#include <cwctype>

CZipPathComponent::CZipPathComponent(const std::string& path)
    : m_path(path)
{
    RemoveTrailingSeparators(m_path);
}

void CZipPathComponent::RemoveTrailingSeparators(std::string& path)
{
    while (HasTrailingSeparator(path))
        path.pop_back();
}

std::string CZipPathComponent::GetFileName() const
{
    const size_t cut = m_path.find_last_of("/\\");
    return cut == std::string::npos ? m_path : m_path.substr(cut + 1);
}

std::string CZipPathComponent::GetFilePath() const
{
    const size_t cut = m_path.find_last_of("/\\");
    return cut == std::string::npos ? std::string() : m_path.substr(0, cut);
}

std::string CZipPathComponent::ToArchiveName(std::string name)
{
    for (char& c : name)
        if (c == '\\')
            c = '/';
    return name;
}

bool CZipPathComponent::SplitSafely(const std::string& name, std::vector<std::string>& components)
{
    components.clear();
    if (name.empty() || IsSeparator(name[0]))
        return false;
    // No control character (C0, DEL, or C1 in UTF-8) may reach a file name: they would reach
    // terminals and listings as they are.
    for (size_t i = 0; i < name.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(name[i]);
        const bool c1 = c == 0xC2 && i + 1 < name.size() && static_cast<unsigned char>(name[i + 1]) >= 0x80 &&
                        static_cast<unsigned char>(name[i + 1]) <= 0x9F;
        if (c < 0x20 || c == 0x7F || c1)
            return false;
    }
    size_t start = 0;
    while (start <= name.size()) {
        size_t end = start;
        while (end < name.size() && !IsSeparator(name[end]))
            ++end;
        std::string part = name.substr(start, end - start);
        if (part == "..")
            return false;
        if (!part.empty() && part != ".")
            components.push_back(std::move(part));
        start = end + 1;
    }
    return true;
}

bool CZipPathComponent::NamesEqualNoCase(const std::string& a, const std::string& b)
{
    std::wstring wa, wb;
    ZipPlatform::SingleToWide(ToArchiveName(a), wa, false);
    ZipPlatform::SingleToWide(ToArchiveName(b), wb, false);
    if (wa.size() != wb.size())
        return false;
    for (size_t i = 0; i < wa.size(); ++i)
        if (std::towlower(wint_t(wa[i])) != std::towlower(wint_t(wb[i])))
            return false;
    return true;
}
