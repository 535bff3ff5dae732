#pragma once

#include <functional>
#include <memory>

#include "ado/Ado.h"
#include "base/Text.h"
#include "jet/storage/Storage.h"

namespace ado::embedded {

/// Where the file of a path lies, for reading and writing; the machine's side knows.
using StorageOf = std::function<std::unique_ptr<jet::Storage>(const base::Text& path)>;

/// ADO's objects over the embedded engine.
class Factory final : public ConnectionFactory {
public:
    explicit Factory(StorageOf storageOf = jet::fileStorage) : storageOf_(std::move(storageOf)) {}

    std::unique_ptr<ado::Connection> createConnection() override;
    std::unique_ptr<ado::Recordset> createRecordset() override;

private:
    StorageOf storageOf_;
};

}  // namespace ado::embedded
