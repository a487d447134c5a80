#pragma once

namespace dolq {

/// Owns one registration with the trace backend: a trace object of its own, whose name is the
/// backend's prefix followed directly by a suffix. Declare it as a class's last member: it is then
/// registered after the other members are set and released before them, also when a constructor
/// throws.
class TraceObject {
public:
    /// Meant: maps hold Nothing until then. The backend sees who asks for its default object.
    enum class UntilRegistered { DefaultObject, Nothing };

    /// Throws what the backend throws.
    explicit TraceObject(const char* suffix,
                         UntilRegistered initially = UntilRegistered::DefaultObject);

    /// Deregisters, then falls back to the default object.
    ~TraceObject();

    TraceObject(const TraceObject&) = delete;
    TraceObject& operator=(const TraceObject&) = delete;

    /// The backend's handle; never null once constructed.
    void* get() const { return m_handle; }

private:
    void* m_handle = nullptr;
};

} // namespace dolq
