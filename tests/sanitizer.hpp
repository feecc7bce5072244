// ZNP_SANITIZER: the memory of this program and of the tested one is laid out by a sanitizer.
#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZNP_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZNP_SANITIZER 1
#endif
#endif
