// Export macro of the Nox library: symbols are hidden by default and only what is
// marked NOX_API is visible to a host.
#ifndef NOX_EXPORT_H
#define NOX_EXPORT_H

#if defined(_WIN32) && !defined(NOX_STATIC)
#if defined(NOX_BUILDING)
#define NOX_API __declspec(dllexport)
#else
#define NOX_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define NOX_API __attribute__((visibility("default")))
#else
#define NOX_API
#endif

#endif
