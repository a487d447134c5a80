#pragma once

namespace dolq {

/// Owns one registration with the trace backend, whose name is the backend's prefix followed
/// directly by a suffix. Several objects of one name are separate registrations. Declare it as the
/// last member of a class: it is then registered after the other members are set, and released
/// before them, also when a constructor throws.
class TraceObject {
public:
    /// What it holds until it is registered. The maps ask for no default object, which a backend
    /// could see.
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
