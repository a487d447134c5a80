#pragma once

#include <string>

#include <link.h>

#include "Commands.h"

namespace dolqctl {

/// A shared object that alarms need, loaded when a command asks for it: one that is missing or
/// broken ends no command that can do without. Found as the dynamic linker finds it for a program
/// that is linked with it, and loaded until the process ends.
class SharedObject {
public:
    /// `soname`: the name that programs ask for.
    explicit SharedObject(const char* soname);

    bool isLoaded() const { return m_object != nullptr; }
    /// Why it is not loaded, in the dynamic linker's own words.
    const std::string& error() const { return m_error; }

    std::string file() const { return isLoaded() ? m_object->l_name : ""; }

    /// Whether it, or a library that it needs, has the function. Otherwise `error` says so.
    bool has(const char* symbol) { return find(symbol) != nullptr; }

    /// Throws CommandError when it is not there.
    template <typename Function> Function* function(const char* symbol) {
        void* const found = find(symbol);
        if (found == nullptr) {
            throw CommandError(m_error + "; see 'dolqctl doctor'");
        }
        return reinterpret_cast<Function*>(found);
    }

private:
    void* find(const char* symbol);

    link_map* m_object;
    std::string m_error;
};

/// What an application is linked with, and what that needs of the platform.
constexpr char kDolqLibrary[] = DOLQCTL_LIBRARY;
constexpr char kGetFactory[] = "_ZN4ruxa2fm4dolq2v213getFmiFactoryEv";
constexpr char kTraceLibrary[] = "libruxa-trace-2.so.2";
constexpr char kCorrelationLibrary[] = "libruxa-zumcs-1.so.1";
constexpr char kLoadModuleLibrary[] = "libvelk.so.1";
constexpr char kNtfLibrary[] = "libSaNtf.so.0";

constexpr struct {
    const char* name; ///< for people
    const char* soname;
} kParts[] = {{"library", kDolqLibrary},
              {"trace backend", kTraceLibrary},
              {"correlation service", kCorrelationLibrary},
              {"load-module handler", kLoadModuleLibrary},
              {"NTF library", kNtfLibrary}};

} // namespace dolqctl
