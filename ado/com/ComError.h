#pragma once

#include "ado/com/SystemHeaders.h"
#include "base/RuntimeError.h"

namespace ado::com {

/// COM's exception record, which a failing call fills in: with what it likes, at once or through a function that is
/// to be called for it. Frees the record's texts at its end.
class ExceptionRecord {
public:
    ExceptionRecord() = default;
    ExceptionRecord(const ExceptionRecord&) = delete;
    ExceptionRecord& operator=(const ExceptionRecord&) = delete;
    ~ExceptionRecord();

    EXCEPINFO* out() { return &info_; }

    /// The record as a run-time error. Its number is scode, else wCode, else that of the failed call; a record
    /// without a description gets the system's text.
    base::RuntimeError error();

private:
    EXCEPINFO info_{};
};

/// The error of a result that came without a record, with the system's text. ADO's own results (800Annnn) have the
/// number nnnn, 3704 for 800A0E78; every other one is its own number.
base::RuntimeError comError(HRESULT result);

inline void requireSuccess(HRESULT result) {
    if (FAILED(result)) throw comError(result);
}

}  // namespace ado::com
