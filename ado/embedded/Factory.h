#pragma once

#include <memory>

#include "ado/Ado.h"
#include "ado/embedded/Connection.h"
#include "jet/storage/Storage.h"

namespace ado::embedded {

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
