#include "foundation/SystemLocation.h"

#include <cstdlib>

namespace curatool {

std::string SystemRoot()
{
    const char* root = std::getenv("CURATOOL_ROOT");
    if (!root || !*root)
        return {};
    std::string value(root);
    while (value.size() > 1 && value.back() == '/')
        value.pop_back();
    return value;
}

std::string SystemLocation(std::string_view absolutePath)
{
    const std::string root = SystemRoot();
    if (root.empty() || absolutePath.empty() || absolutePath.front() != '/')
        return std::string(absolutePath);
    return root + std::string(absolutePath);
}

QString SystemLocation(const QString& absolutePath)
{
    return QString::fromStdString(SystemLocation(absolutePath.toStdString()));
}

}  // namespace curatool
