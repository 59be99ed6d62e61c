-- The system script: how the installation's database engine names what the project script gives keys to. A key is
-- MODULE:NAME, as "PIPE:spec".

-- By the engine's number: a key in the form that the engine takes.
local engines = {
    -- SQLite: a file's name, in which some systems allow no colon.
    [0] = function(key) return (key:gsub(":", "_")) end,
    -- ODBC: a schema and a table, in quotes.
    [1] = function(key) return '"' .. key:gsub(":", '"."') .. '"' end,
}

local escape = engines[0]

-- The program is given a place inside Lua's memory, not a copy: each text that was answered must stay.
local answered = {}
local function answer(text)
    answered[text] = true
    return text
end

-- Called once, when the program starts.
function initConfig()
    escape = engines[0]
end

-- Whether the engine of that number can be used; it then is.
function set_project_dbengine(number)
    local chosen = engines[number]
    escape = chosen or escape
    return chosen ~= nil
end

function escape_dbkey(key)
    return key and answer(escape(key))
end
