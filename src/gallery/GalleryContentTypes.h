#pragma once

// Content types of activities, kept in CGalleryMetadata::m_format: a basic type, then
// parameters behind ";". This program stores and copies them without judging them.
inline constexpr wchar_t kScriventContentType[] = L"application/x-zoltaworks-scrivent";
inline constexpr wchar_t kGalleryItemContentType[] = L"application/x-zoltaworks-galleryitem";

// Parameters; the "%s" ones take a value.
inline constexpr wchar_t kContentTypeOriginalType[] = L"x-original-type=%s";
inline constexpr wchar_t kContentTypeScriventLink[] = L"x-zoltaworks-scrivent-link=%s";
inline constexpr wchar_t kContentTypeHasText[] = L"x-zoltaworks-scrivent-text=yes";
inline constexpr wchar_t kContentTypeHasInk[] = L"x-zoltaworks-scrivent-ink=yes";
inline constexpr wchar_t kContentTypeHasSound[] = L"x-zoltaworks-scrivent-sound=yes";
inline constexpr wchar_t kContentTypeHasAnimation[] = L"x-zoltaworks-scrivent-animation=yes";
inline constexpr wchar_t kContentTypeBackgroundPage[] = L"x-zoltaworks-scrivent-page=background";
inline constexpr wchar_t kContentTypeTemplatePage[] = L"x-zoltaworks-scrivent-page=template";

// Type words of the vocabulary.
inline constexpr wchar_t kContentTypeLessonActivity[] = L"x-zoltaworks-gallery-lessonactivity";
inline constexpr wchar_t kContentTypeWebsite[] = L"x-zoltaworks-gallery-website";
