#pragma once

namespace crash {

// g++ says so by macros, clang++ by features.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define LUMACHECK_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define LUMACHECK_SANITIZED 1
#endif
#endif

/// Whether a sanitizer that handles fatal signals itself is built in.
#ifdef LUMACHECK_SANITIZED
inline constexpr bool isSanitized = true;
#else
inline constexpr bool isSanitized = false;
#endif

}  // namespace crash
