#pragma once

#import <Foundation/Foundation.h>

/// \file
/// What compilers other than clang, which GNUstep supports, do not know of the language.

/// An object that may be nil.
#ifdef __clang__
#define ZOR_NULLABLE _Nullable
#else
#define ZOR_NULLABLE
#endif

/// The attribute of a property that does not keep its object alive.
#ifdef __clang__
#define ZOR_WEAK_PROPERTY weak
#else
#define ZOR_WEAK_PROPERTY assign
#endif

/// The name, a string, that Swift gives a declaration.
#if __has_attribute(swift_name)
#define ZOR_SWIFT_NAME(name) __attribute__((swift_name(name)))
#else
#define ZOR_SWIFT_NAME(name)
#endif
