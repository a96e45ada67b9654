#pragma once

#include <string>

// Death-test pattern for the contract message quoting exactly `text`.
inline std::string AssertionPattern(const std::string& text)
{
    std::string pattern = "Assertion failed: \"";
    for (char c : text) {
        if (std::string(".[]{}()\\*+?|^$").find(c) != std::string::npos)
            pattern += '\\';
        pattern += c;
    }
    return pattern + "\"";
}
