#pragma once

#include <functional>
#include <memory>

#include "ado/Ado.h"
#include "base/Text.h"
#include "jet/PageIo.h"

namespace ado::embedded {

/// Opens the file at a path for reading; how, the machine's side knows.
using OpenFile = std::function<std::unique_ptr<jet::PageIo>(const base::Text& path)>;

/// ADO's objects over the embedded engine.
class Factory final : public ConnectionFactory {
public:
    explicit Factory(OpenFile openFile) : openFile_(std::move(openFile)) {}

    std::unique_ptr<ado::Connection> createConnection() override;
    std::unique_ptr<ado::Recordset> createRecordset() override;

private:
    OpenFile openFile_;
};

}  // namespace ado::embedded
