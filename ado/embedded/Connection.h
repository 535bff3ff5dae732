#pragma once

#include <functional>
#include <memory>

#include "ado/Ado.h"
#include "ado/embedded/ProviderProperties.h"
#include "base/Text.h"
#include "jet/storage/Storage.h"
#include "jet/transaction/Database.h"

namespace ado::embedded {

/// Gives the storage of the file with this path, for reading and writing. The machine's side implements it.
using StorageOf = std::function<std::unique_ptr<jet::Storage>(const base::Text& path)>;

/// A connection to one file. The file stays open for reading from Open to Close; it is locked only while a statement or
/// a record set reads or writes it. If an interrupted writer left a journal, the next one to use the file rolls it
/// back.
///
/// There is only one provider; it has the name of the original one.
class Connection final : public ado::Connection {
public:
    explicit Connection(StorageOf storageOf) : storageOf_(std::move(storageOf)) {}

    base::Text Provider() const override { return provider_; }
    /// @throws 3705 on an open connection, 3706 for any other name
    void setProvider(base::TextView name) override;
    ado::Properties& Properties() override { return properties_; }

    /// @param connectionString  must be empty, because the properties say everything (otherwise 3001)
    /// @param userId            empty or "Admin", the user of every file without accounts of its own; the
    ///                          user's password is then empty
    /// @throws 3705 if it is already open, 3706 without a provider; the engine's errors of opening
    void Open(base::TextView connectionString, base::TextView userId, base::TextView password,
              std::int32_t options) override;
    std::int32_t State() const override { return database_ ? adStateOpen : adStateClosed; }
    void Close() override;
    void Execute(base::TextView commandText) override;

    /// The open file; null while the connection is closed.
    const std::shared_ptr<jet::Database>& database() const { return database_; }

private:
    StorageOf storageOf_;
    base::Text provider_ = u"MSDASQL";  // ADO's own default provider, which does not exist here
    ProviderProperties properties_;
    std::shared_ptr<jet::Database> database_;
};

}  // namespace ado::embedded
