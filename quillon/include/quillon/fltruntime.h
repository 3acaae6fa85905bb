// The base of objects that are stored like records but are no OpenFlight records.
#pragma once

class FltToken;

/// Something with a binary form of its own, independent of any revision.
class FltRuntime {
public:
    virtual ~FltRuntime() = default;

    /// Puts the object into `token`, replacing what it held. Not yet padded.
    virtual void write(FltToken& token) const = 0;

    /// Reads the object from `token`. Throws `AviaryAssertion` for bytes of something else.
    virtual void read(FltToken& token) = 0;

protected:
    FltRuntime() = default;
    FltRuntime(const FltRuntime&) = default;
    FltRuntime& operator=(const FltRuntime&) = default;
};
