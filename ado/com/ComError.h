#pragma once

#include "ado/com/SystemHeaders.h"
#include "base/RuntimeError.h"

namespace ado::com {

/// COM's exception record, which a failing call fills in: any part of it, at once or later through a function that the
/// caller has to call. The destructor frees the record's texts.
class ExceptionRecord {
public:
    ExceptionRecord() = default;
    ExceptionRecord(const ExceptionRecord&) = delete;
    ExceptionRecord& operator=(const ExceptionRecord&) = delete;
    ~ExceptionRecord();

    EXCEPINFO* out() { return &info_; }

    /// The record as a run-time error. The number is scode, otherwise wCode, otherwise that of the failed call; if the
    /// record has no description, the system's text is used.
    base::RuntimeError error();

private:
    EXCEPINFO info_{};
};

/// The error for a result without a record, with the system's text. ADO's own results (800Annnn) get the number nnnn,
/// so 3704 for 800A0E78; any other result is its own number.
base::RuntimeError comError(HRESULT result);

inline void requireSuccess(HRESULT result) {
    if (FAILED(result)) throw comError(result);
}

}  // namespace ado::com
