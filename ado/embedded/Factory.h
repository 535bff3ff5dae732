#pragma once

#include <functional>
#include <memory>

#include "ado/Ado.h"
#include "base/Text.h"
#include "jet/storage/Storage.h"

namespace ado::embedded {

/// Gives the storage of the file with this path, for reading and writing. The machine's side implements it.
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
