-- The project script: where each module of the CAD program finds what belongs to it. The program calls the global
-- functions below, most of them with a module's name ("PIPE"), and takes the text that they return. What it gets, and
-- whether that is there, is shown by
--
--     quor config table --module PIPE
--
-- To move something, change a table. A path is written with backslashes, which become the system's own separators, and
-- begins in the installation or in the project, as its heading says.

-- In the installation, by module; `other` is for every module that is not named.
local modelingFiles = { EQUIP = "sys\\modelingEquip.xml", other = "sys\\modeling.xml" }
local modelingRecords = { other = "sys\\modelingMeta.xml" }
local propertyClasses = { other = "sys\\propertyClass.xml" }
local integerTexts = { other = "sys\\quorInt2Str.lua" }
local databaseClasses = { other = "sys\\projDatabaseClass.lua" }

-- In the project, by module.
local attributes = { PIPE = "attr\\pipe.quor", EQUIP = "attr\\equip.quor", other = "attr\\general.quor" }
local supports = { other = "projectSupport.quor" }
local graphics = { other = "projectGlib.quor" }
local commons = { other = "sysCommon.quor" }
local namings = { other = "sysNaming.quor" }
local inserts = { PIPE = "insert\\pipe.quor", EQUIP = "insert\\equip.quor", other = "insert\\general.quor" }
local toolTips = { other = "sys\\quorToolTip.lua" }
local templates = { PIPE = "template\\pipe", EQUIP = "template\\equip", other = "template\\general" }
local keyFolders = { SUPPORT = "skey\\support", other = "skey\\component" }
local standardParts = {
    EQUIP = "stanpart\\equip.quor",
    other = "stanpart\\general.quor",
    -- A gap, left to show what one looks like: `false` is no answer. The program then says that the configuration is
    -- wrong, and takes its own name, "projectStanpart.quor" in the project. To close the gap, name a file.
    PIPE = false,
}

-- In the project, by other things than the module.
local standards = { GB = "standard\\GB.quor", ASME = "standard\\ASME.quor" } -- by what initConfig is told
local userFolders = { ["1"] = "user\\version1", ["2"] = "user\\version2" } -- by what setUserVersion is told
local specifications = { A1A = "spec\\A1A.quor", B3A = "spec\\B3A.quor" } -- by name
local allSpecifications = "projectSpec.quor" -- without one
local digitalFiles = { PUMP = "digital\\pump.quor" } -- by name
local partFolders = { drawing = "drawings", report = "reports" } -- by the part of the project
local objectKeyFolders = { [0] = "skey\\component", [1] = "skey\\support" } -- by the kind of object

-- No files.
local databaseOwners = { SUPPORT = "PIPE", ISO = "PIPE" } -- modules whose records lie in another's databases
local seeds = { PIPE = 1000, EQUIP = 2000, other = 9000 } -- where a new database begins to count
local digitalStandards = { PIPE = "GB", EQUIP = "GB", other = "" }
local fullPropertyClasses = { PIPE = true, EQUIP = true, other = false }

-- What the functions for the set-up are told.
local standard = "GB"
local userVersion = "2"
local designModule

local function of(module, choices)
    local choice = choices[module]
    if choice == nil then choice = choices.other end
    return choice
end

-- The program is given a place inside Lua's memory, not a copy: each text that was answered must stay.
local answered = {}
local function answer(text)
    answered[text] = true
    return text
end

local separator = package.config:sub(1, 1)

-- A byte like a backslash can be the second half of a character in GBK; it is then no separator.
local function path(folder, name)
    if not name then return nil end
    if name == "" then return answer(folder) end
    return answer(folder .. separator .. name:gsub("[\129-\254]?.", { ["\\"] = separator }))
end

local function installed(name) return path(kxcom.quorPath(), name) end
local function inProject(name) return path(kxcom.projectPath(), name) end

-- A file in a folder of the project, or in the project itself where no folder is given; without a file's name the
-- folder.
local function inFolder(folder, name)
    if not folder then return inProject(name or "") end
    if not name or name == "" then return inProject(folder) end
    return inProject(folder .. "\\" .. name)
end

-- Set-up: the program calls these when it starts, where it has something to tell.

function initConfig(name)
    if standards[name] then
        standard = name
    else
        kxcom.errorMsg("no standard is called \"" .. name .. "\"; " .. standard .. " it is")
    end
end

function setUserVersion(version) userVersion = version end

function setDesignDbModule(module) designModule = module ~= "" and module or nil end

-- The installation's files.

function getModelingXml(module) return installed(of(module, modelingFiles)) end
function getModelingXml_meta(module) return installed(of(module, modelingRecords)) end
function getPropertyClass(module) return installed(of(module, propertyClasses)) end

-- The project's files.

function getProjectStan() return inProject(standards[standard]) end
function getProjectSpec(_, name) return inProject(specifications[name] or allSpecifications) end
function getProjectAttr(module) return inProject(of(module, attributes)) end
function getProjectSupport(module) return inProject(of(module, supports)) end
function getProjectGlib(module) return inProject(of(module, graphics)) end
function getProjectSyscommon(module) return inProject(of(module, commons)) end
function getProjectSysname(module) return inProject(of(module, namings)) end
function getProjectSysInsert(module) return inProject(of(module, inserts)) end
function getProjectTooltip(module) return inProject(of(module, toolTips)) end
function getProjectStanpart(module) return inProject(of(module, standardParts) or nil) end
function getProjectSkey(module, name) return inFolder(of(module, keyFolders), name) end
function getProjectSkey_r(module, name) return getProjectSkey(module, name) end
function getProjectPath(_, part, file) return inFolder(partFolders[part], file) end
function getProjectTemplate(module) return inProject(of(module, templates)) end
function getProjectUser() return inProject(userFolders[userVersion]) end
function getObjectSkeyBasicPath(kind) return inProject(objectKeyFolders[kind]) end

-- The keys of databases: texts that the system script turns into what the engine takes.

local function key(module, name)
    return answer((designModule or databaseOwners[module] or module) .. ":" .. name)
end

function getProjectStan_dbkey(module) return key(module, "standard") end
function getProjectSpec_dbkey(module) return key(module, "spec") end
function getProjectAttr_dbkey(module) return key(module, "attr") end
function getProjectSupport_dbkey(module) return key(module, "support") end
function getProjectGlib_dbkey(module) return key(module, "glib") end
function getProjectSyscommon_dbkey(module) return key(module, "common") end
function getProjectSysname_dbkey(module) return key(module, "naming") end
function getProjectStanpart_dbkey(module) return key(module, "stanpart") end

function getProjectDbSeed(_, module) return of(module, seeds) end

-- A script may leave these out, and the program says nothing. "getQuorInt2Str_key" is left out: the program's own key
-- will do.

function getQuorInt2Str(module) return installed(of(module, integerTexts)) end
function getProjDatabaseClass(module) return installed(of(module, databaseClasses)) end
function getDigitalFile(_, name) return inProject(digitalFiles[name]) end
function isDigitalStan(module) return of(module, digitalStandards) end
function isPropertyClass_full(module) return of(module, fullPropertyClasses) end
