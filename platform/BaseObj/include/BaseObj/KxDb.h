#pragma once

/// The database engines that a project can stand on.
namespace KxDb {

/// The engine's number is what a configuration script receives; it never changes once given out.
enum class DbType : int {
    Sqlite = 0, ///< a file of the project itself
    Odbc = 1,   ///< a server, reached through the system's data sources
};

} // namespace KxDb
