-- Tables as text and back, for the host's serializer: serializeTable(value) gives a text, unSerializeTable(text) the
-- value again. Both take any tree of tables, numbers, strings, booleans and 64-bit integers, shared parts and cycles
-- included, pass over metatables, and raise an error for everything else. Text is read, never run. Its form, told in
-- docs/serializer.md:
--
--     quor-table 1 {12.5,"DN50",&1{"id"=#4611686018427388001,"next"=*1},true={}}
--
-- Nothing here calls itself for a table within a table: depth costs memory alone. And nothing asks the locale: numbers
-- pass as whole numbers only, and texts are put in order by their bytes.

local byte, char, find, format = string.byte, string.char, string.find, string.format
local gsub, match, sub = string.gsub, string.match, string.sub
local frexp, floor, huge, ldexp = math.frexp, math.floor, math.huge, math.ldexp
local concat, sort = table.concat, table.sort
local error, next, rawget, tonumber, tostring, type = error, next, rawget, tonumber, tostring, type

-- The host's 64-bit integers: int64(value) is nil for any other userdata. There are none without the host.
local int64 = rawget(_G, "int64") or function() end

local HEADER = "quor-table 1 "

-- Bytes other than these stand in a text as they are: \HH, two hexadecimal digits, stands for these.
local SPECIAL = "[%c\"\\\127-\255]"
local escapeOf, byteOf = {}, {}
for code = 0, 255 do
    local digits = format("%02X", code)
    escapeOf[char(code)] = "\\" .. digits
    byteOf[digits] = char(code)
end

-- Whole numbers up to this one have a double of their own.
local MOST_WHOLE = 2 ^ 53

-- Fractions of up to six decimals are written with a point, so long as all their digits make such a whole number.
local DECIMALS = 6
local SCALE = 10 ^ DECIMALS
local MOST_SCALED = MOST_WHOLE / SCALE

local function quoted(text)
    if find(text, SPECIAL) then text = gsub(text, SPECIAL, escapeOf) end
    return '"' .. text .. '"'
end

-- Writes a number so that it can be read exactly: 12, 12.5, or MpE, which is M times two to the power of E.
local function textOfNumber(number)
    if number ~= number then return "nan" end
    if number == 0 then return 1 / number < 0 and "-0" or "0" end
    local sign, size = "", number
    if number < 0 then sign, size = "-", -number end
    if size == huge then return sign .. "inf" end
    if size <= MOST_WHOLE and size % 1 == 0 then return sign .. format("%.0f", size) end
    if size < MOST_SCALED then
        local scaled = floor(size * SCALE + 0.5)
        if scaled / SCALE == size then
            local digits = format("%07.0f", scaled)
            return sign .. sub(digits, 1, -DECIMALS - 1) .. "." .. match(sub(digits, -DECIMALS), "^(.-)0*$")
        end
    end
    local mantissa, exponent = frexp(size)
    mantissa, exponent = mantissa * MOST_WHOLE, exponent - 53
    while mantissa % 2 == 0 do
        mantissa, exponent = mantissa / 2, exponent + 1
    end
    return sign .. format("%.0fp%.0f", mantissa, exponent)
end

local function textOfId(id)
    return "#" .. tostring(id)
end

-- Six bytes of a text, from a place on, as one number by which texts can be put in order. The end comes first.
local function weightOf(text, at)
    local a, b, c, d, e, f = byte(text, at, at + 5)
    local weight = a and a + 1 or 0
    weight = weight * 257 + (b and b + 1 or 0)
    weight = weight * 257 + (c and c + 1 or 0)
    weight = weight * 257 + (d and d + 1 or 0)
    weight = weight * 257 + (e and e + 1 or 0)
    return weight * 257 + (f and f + 1 or 0)
end

-- Whether a text comes before a different one, from a place on before which they are alike.
local function precedes(one, other, at)
    while true do
        local weight, otherWeight = weightOf(one, at), weightOf(other, at)
        if weight ~= otherWeight then return weight < otherWeight end
        at = at + 6
    end
end

local weightsOfFew = {}

-- Puts a short list of different texts in the order of their bytes.
local function orderFew(texts, count)
    local weights = weightsOfFew
    for i = 1, count do
        local text, weight = texts[i], weightOf(texts[i], 1)
        local at = i
        while at > 1 do
            local before = weights[at - 1]
            if before < weight or (before == weight and precedes(texts[at - 1], text, 7)) then break end
            texts[at], weights[at] = texts[at - 1], before
            at = at - 1
        end
        texts[at], weights[at] = text, weight
    end
end

-- As above, for a list of any length: again and again, groups that are alike so far are told apart by six bytes more.
-- The first group is the list itself, of which all has been read when its first text is put back.
local function orderMany(texts)
    local ordered = 0
    -- What is still to come, the first on top: single texts, and groups that are alike before a place.
    local pending, places, count = { texts }, { 1 }, 1
    while count > 0 do
        local group, at = pending[count], places[count]
        count = count - 1
        if type(group) == "string" then
            ordered = ordered + 1
            texts[ordered] = group
        else
            local weights, alike = {}, {}
            for i = 1, #group do
                local text = group[i]
                local weight = weightOf(text, at)
                local others = alike[weight]
                if not others then
                    weights[#weights + 1] = weight
                    alike[weight] = text
                elseif type(others) == "string" then
                    alike[weight] = { others, text }
                else
                    others[#others + 1] = text
                end
            end
            sort(weights)
            for i = #weights, 1, -1 do
                count = count + 1
                pending[count], places[count] = alike[weights[i]], at + 6
            end
        end
    end
end

local FEW = 20

local function append(list, values)
    for i = 1, #values do list[#list + 1] = values[i] end
end

local NONE = {}

-- How many entries a table has from 1 on without a gap; a list of its other keys in order: numbers, texts, false,
-- true, ids; and, when there are any, its keys that are tables.
local function entriesOf(t)
    local length = 0
    while rawget(t, length + 1) ~= nil do length = length + 1 end
    local texts, count, keysOf = NONE, 0, nil
    for key in next, t do
        local kind = type(key)
        if kind == "string" then
            if count == 0 then texts = {} end
            count = count + 1
            texts[count] = key
        elseif kind ~= "number" or key < 1 or key > length or key % 1 ~= 0 then
            if kind == "userdata" and not int64(key) then kind = "other" end
            keysOf = keysOf or { number = {}, boolean = {}, userdata = {}, other = {} }
            if kind == "table" and not keysOf.table then keysOf.table = {} end
            local keys = keysOf[kind] or keysOf.other
            keys[#keys + 1] = key
        end
    end
    if count > FEW then
        orderMany(texts)
    elseif count > 1 then
        orderFew(texts, count)
    end
    if not keysOf then return length, texts end

    local keys = keysOf.number
    sort(keys)
    append(keys, texts)
    sort(keysOf.boolean, function(one, other) return not one and other end)
    append(keys, keysOf.boolean)
    sort(keysOf.userdata)
    append(keys, keysOf.userdata)
    append(keys, keysOf.other)
    return length, keys, keysOf.table
end

-- One step of a path to a value, for messages.
local function stepTo(key)
    local kind = type(key)
    if kind == "string" then
        if match(key, "^[A-Za-z_][A-Za-z_0-9]*$") and #key <= 40 then return "." .. key end
        return "[" .. quoted(sub(key, 1, 40)) .. (#key > 40 and "..." or "") .. "]"
    end
    if kind == "number" then return "[" .. textOfNumber(key) .. "]" end
    if kind == "boolean" then return "[" .. tostring(key) .. "]" end
    if kind == "userdata" then return "[" .. textOfId(key) .. "]" end
    return "[" .. kind .. "]"
end

local OUTER_STEPS, INNER_STEPS = 5, 10

function serializeTable(root)
    local out, count = { HEADER }, 1
    -- Where each table and id begins in `out`, and its label once it is referred to.
    local places, labels, labelled = {}, {}, 0
    -- Keys as they are written; most are those of many tables.
    local names = {}
    -- The tables that are being written, outermost first: their entries, as entriesOf gives them, the number of the
    -- entry in work, and whether its key is being written.
    local tables, lengths, keyLists, tableKeys, entries, inKey, depth = {}, {}, {}, {}, {}, {}, 0

    local function refuse(value)
        local path = "value"
        for level = 1, depth do
            local entry, length = entries[level], lengths[level]
            local key = entry
            if entry > length then key = keyLists[level][entry - length] end
            if depth > OUTER_STEPS + INNER_STEPS and level == OUTER_STEPS + 1 then path = path .. "..." end
            if level <= OUTER_STEPS or level > depth - INNER_STEPS then
                path = path .. (inKey[level] and "{key}" or stepTo(key))
            end
        end
        local kind = value == nil and "nil" or "a " .. type(value)
        error("serializeTable: " .. kind .. " cannot be written: " .. path, 0)
    end

    local value = root
    while true do
        local kind = type(value)
        count = count + 1
        if kind == "number" then
            out[count] = textOfNumber(value)
        elseif kind == "string" then
            out[count] = quoted(value)
        elseif kind == "boolean" then
            out[count] = value and "true" or "false"
        elseif kind == "table" or kind == "userdata" then
            local place = places[value]
            if place then
                local label = labels[value]
                if not label then
                    labelled = labelled + 1
                    label = format("%.0f", labelled)
                    labels[value] = label
                    out[place] = "&" .. label .. out[place]
                end
                out[count] = "*" .. label
            elseif kind == "table" then
                places[value] = count
                out[count] = "{"
                depth = depth + 1
                tables[depth], entries[depth], inKey[depth] = value, 0, false
                lengths[depth], keyLists[depth], tableKeys[depth] = entriesOf(value)
            else
                local id = int64(value)
                if not id then refuse(value) end
                places[value] = count
                out[count] = textOfId(id)
            end
        else
            refuse(value)
        end

        -- On to the next value: of the entry in work, of the next one, or of an outer table.
        while true do
            if depth == 0 then return concat(out) end
            local t, entry, length = tables[depth], entries[depth], lengths[depth]
            if inKey[depth] then
                inKey[depth] = false
                count = count + 1
                out[count] = "="
                value = rawget(t, keyLists[depth][entry - length])
                break
            end
            entry = entry + 1
            local key
            if entry > length then
                key = keyLists[depth][entry - length]
                if key == nil and tableKeys[depth] then
                    -- Those that were written before come first, as they were written; the others in no certain order.
                    local keys = tableKeys[depth]
                    sort(keys, function(one, other) return (places[one] or huge) < (places[other] or huge) end)
                    append(keyLists[depth], keys)
                    tableKeys[depth] = nil
                    key = keys[1]
                end
                if key == nil then
                    count = count + 1
                    out[count] = "}"
                    tables[depth], keyLists[depth] = nil, nil
                    depth = depth - 1
                end
            end
            if entry <= length or key ~= nil then
                entries[depth] = entry
                if entry > 1 then
                    count = count + 1
                    out[count] = ","
                end
                if entry <= length then
                    value = rawget(t, entry)
                elseif type(key) == "string" then
                    local name = names[key]
                    if not name then
                        name = quoted(key) .. "="
                        names[key] = name
                    end
                    count = count + 1
                    out[count] = name
                    value = rawget(t, key)
                else
                    inKey[depth] = true
                    -- A key of -0 is the key 0.
                    value = key == 0 and 0 or key
                end
                break
            end
        end
    end
end

local function fail(what, at)
    error("unSerializeTable: " .. what .. " at byte " .. format("%.0f", at), 0)
end

-- The readers take the place where their value begins and give it with the place behind it.

local POWERS = { 10 }
for i = 2, 15 do POWERS[i] = POWERS[i - 1] * 10 end

local MOST_DIGITS = 16

local function readNumber(text, begin, at, negative)
    local digits
    digits, at = match(text, "^([0-9]+)()", at)
    if not digits then fail("a value is expected", begin) end
    local number
    local mark = byte(text, at)
    if mark == 46 then -- .
        local fraction, behind = match(text, "^([0-9]+)()", at + 1)
        if not fraction then fail("a digit is expected", at + 1) end
        if #digits + #fraction > MOST_DIGITS then fail("a number has too many digits", begin) end
        number, at = tonumber(digits .. fraction) / POWERS[#fraction], behind
    elseif #digits > MOST_DIGITS then
        fail("a number has too many digits", begin)
    elseif mark == 112 then -- p
        local exponent, behind = match(text, "^(%-?[0-9]+)()", at + 1)
        if not exponent then fail("a digit is expected", at + 1) end
        if #exponent > 5 then fail("a number is out of range", begin) end
        local mantissa = tonumber(digits)
        number, at = ldexp(mantissa, tonumber(exponent)), behind
        if number == huge or (number == 0 and mantissa ~= 0) then fail("a number is out of range", begin) end
    else
        number = tonumber(digits)
    end
    if negative then number = -number end
    return number, at
end

local function readString(text, at)
    local close = find(text, '"', at + 1, true)
    if not close then fail("a string does not end", at) end
    local value = sub(text, at + 1, close - 1)
    local strange = find(value, "[%c\127-\255]")
    if strange then fail("a string holds a byte that must be escaped", at + strange) end
    if find(value, "\\", 1, true) then
        local escapes, decoded
        local _, marks = gsub(value, "\\", "")
        decoded, escapes = gsub(value, "\\([0-9A-F][0-9A-F])", byteOf)
        if escapes ~= marks then fail("a string holds an unknown escape", at) end
        value = decoded
    end
    return value, close + 1
end

local function readId(text, at)
    local digits, behind = match(text, "^#(%-?[0-9]+)()", at)
    local id = digits and #digits <= 20 and int64(digits)
    if not id then fail("a 64-bit integer is expected", at) end
    return id, behind
end

local function readLabel(text, at)
    local digits, behind = match(text, "^.([1-9][0-9]*)()", at)
    if not digits or #digits > MOST_DIGITS - 1 then fail("a label is expected", at) end
    return tonumber(digits), behind
end

local WORDS = { ["true"] = true, ["false"] = false, nan = 0 / 0, inf = huge, ["-inf"] = -huge }

-- A value that is no table: of a number, a string, an id or a word.
local function readPlain(text, at)
    local first = byte(text, at)
    if first == 34 then return readString(text, at) end -- "
    if first == 35 then return readId(text, at) end -- #
    local word, behind = match(text, "^(%-?[a-z]+)()", at)
    if word then
        local value = WORDS[word]
        if value == nil then fail("an unknown word", at) end
        return value, behind
    end
    if not first then fail("the text ends early", at) end
    local negative = first == 45 -- -
    return readNumber(text, at, negative and at + 1 or at, negative)
end

function unSerializeTable(text)
    if type(text) ~= "string" then error("unSerializeTable: a text is expected, not " .. type(text), 0) end
    local version, at = match(text, "^quor%-table ([0-9]+) ()")
    if not version then error("unSerializeTable: this is no text of serializeTable", 0) end
    if version ~= "1" then
        error("unSerializeTable: a text of version " .. sub(version, 1, 20) .. " cannot be read", 0)
    end
    local labelled = {}
    -- The tables that are being read, outermost first: the length of their list so far, the key whose value is next,
    -- and whether there were keys.
    local tables, lengths, keys, keyed, depth = {}, {}, {}, {}, 0

    while true do
        local first = byte(text, at)
        local label
        if first == 38 then -- &
            local begin = at
            label, at = readLabel(text, at)
            if labelled[label] then fail("a label stands twice", begin) end
            first = byte(text, at)
            if first ~= 123 and first ~= 35 then fail("a table or a 64-bit integer is expected", at) end
        end
        local value
        if first == 123 then -- {
            value = {}
            if label then labelled[label] = value end
            at = at + 1
            if byte(text, at) == 125 then -- }
                at = at + 1
            else
                depth = depth + 1
                tables[depth], lengths[depth], keys[depth], keyed[depth] = value, 0, nil, false
                value = nil
            end
        elseif first == 42 then -- *
            local begin = at
            label, at = readLabel(text, at)
            value = labelled[label]
            if not value then fail("a label that does not stand before", begin) end
        else
            value, at = readPlain(text, at)
            if label then labelled[label] = value end
        end

        -- The value into its table, and each table that ends with it into the next.
        while value ~= nil do
            local mark = byte(text, at)
            if depth == 0 then
                if mark then fail("the text goes on behind its end", at) end
                return value
            end
            local t = tables[depth]
            local key = keys[depth]
            if key ~= nil then
                t[key] = value
                keys[depth] = nil
            elseif mark == 61 then -- =
                if value ~= value then fail("not-a-number is no key", at) end
                if t[value] ~= nil then fail("a key stands twice", at) end
                keys[depth], keyed[depth] = value, true
                at = at + 1
                break
            elseif keyed[depth] then
                fail("= is expected", at)
            else
                local length = lengths[depth] + 1
                lengths[depth] = length
                t[length] = value
            end
            if mark == 44 then -- ,
                at = at + 1
                break
            elseif mark == 125 then -- }
                at = at + 1
                value = t
                tables[depth] = nil
                depth = depth - 1
            else
                fail(mark and ", or } is expected" or "the text ends early", at)
            end
        end
    end
end
