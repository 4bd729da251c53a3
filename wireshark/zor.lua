-- Dissectors for Wireshark: smart configuration frames, and the lines of modules and phones.
--
-- Copy this file to Wireshark's folder of personal Lua plugins (Help, About Wireshark, Folders), or run
-- tshark -X lua_script:zor.lua. The display filters are zor_config and zor_line.

local CONFIG_PORT = 6001
local MODULE_PORT = 25000 -- Takes requests and sends answers.
local ANNOUNCEMENT_PORT = 25010

--------------------------------------------------------------------------------------------------------------
-- Smart configuration: all meaning is in the destination and the length; the payload is zeros.

local config = Proto("zor_config", "Smart Configuration")

config.prefs.multicast_base =
  Pref.uint("Multicast length base", 30, "Length of version 5's multicast sync, bytes (McLen)")
config.prefs.broadcast_base =
  Pref.uint("Broadcast length base", 30, "Length of version 5's broadcast sync 1, bytes (BcLen)")

local config_fields = {
  version = ProtoField.uint8("zor_config.version", "Version"),
  channel = ProtoField.string("zor_config.channel", "Channel"),
  kind = ProtoField.string("zor_config.kind", "Kind"),
  offset = ProtoField.uint16("zor_config.offset", "Offset in the packet"),
  bytes = ProtoField.string("zor_config.bytes", "Packet bytes", base.ASCII, "In hexadecimal"),
  length = ProtoField.uint16("zor_config.length", "Datagram length"),
}
config.fields = config_fields

local contradiction = ProtoExpert.new(
  "zor_config.contradiction", "The length does not fit the group: check the length base in the preferences",
  expert.group.PROTOCOL, expert.severity.WARN)
config.experts = { contradiction }

local EVERY_HOST = "255.255.255.255"

local MAX_DATA_FRAMES = 50
local VERSION3_MARKER_LENGTH = 30
local VERSION3_BASE = 31

-- Broadcast lengths above the base: positions lie below values, values below sync 2.
local SYNC2, SYNC3, FIRST_POSITION, FIRST_VALUE = 358, 1, 2, 102

-- A data frame carries two bytes, in the last octets of its group. `parity` is that of its index.
local function read_data(version, length, base_length, parity, octets)
  local index = length - base_length
  local meaning = {
    version = version, channel = "multicast", kind = "data",
    bytes = string.format("%02x%02x", octets[3], octets[4]),
  }
  if index < 0 or index >= MAX_DATA_FRAMES or index % 2 ~= parity then
    meaning.contradicts = true
    meaning.text = string.format("data %02x %02x, length %d does not fit", octets[3], octets[4], length)
    return meaning
  end
  meaning.offset = 2 * index
  meaning.text = string.format("%d, %d: %02x %02x", 2 * index, 2 * index + 1, octets[3], octets[4])
  return meaning
end

local function read_mark(version, kind, length, expected)
  local meaning = { version = version, channel = "multicast", kind = kind, text = kind }
  if length ~= expected then
    meaning.contradicts = true
    meaning.text = string.format("%s, length %d does not fit", kind, length)
  end
  return meaning
end

local function read_multicast(octets, length)
  local base_length = config.prefs.multicast_base
  local second = octets[2]
  if octets[1] ~= 239 then return nil end
  if second == 122 and octets[3] == 111 and octets[4] == 114 then
    return read_mark(5, "sync", length, base_length)
  elseif second == 111 then return read_data(5, length, base_length, 0, octets)
  elseif second == 114 then return read_data(5, length, base_length, 1, octets)
  elseif second == 90 and octets[3] == 0 and octets[4] == 0 then
    return read_mark(3, "marker", length, VERSION3_MARKER_LENGTH)
  elseif second == 79 then return read_data(3, length, VERSION3_BASE, 0, octets)
  elseif second == 82 then return read_data(3, length, VERSION3_BASE, 1, octets)
  end
  return nil
end

local function read_broadcast(length)
  local meaning = { version = 5, channel = "broadcast" }
  local added = length - config.prefs.broadcast_base
  if added == 0 then meaning.kind = "sync 1"
  elseif added == SYNC3 then meaning.kind = "sync 3"
  elseif added == SYNC2 then meaning.kind = "sync 2"
  elseif added >= FIRST_POSITION and added < FIRST_VALUE then
    meaning.kind = "position"
    meaning.offset = added - FIRST_POSITION
    meaning.text = "position " .. meaning.offset
  elseif added >= FIRST_VALUE and added < SYNC2 then
    meaning.kind = "value"
    meaning.bytes = string.format("%02x", added - FIRST_VALUE)
    meaning.text = "value " .. meaning.bytes
  else
    return nil
  end
  meaning.text = meaning.text or meaning.kind
  return meaning
end

local function octets_of(address)
  local octets = {}
  for octet in address:gmatch("%d+") do octets[#octets + 1] = tonumber(octet) end
  return octets
end

-- Returns what a datagram of `length` bytes to `address`, a dotted quad, means, or nil.
local function read_config(address, length)
  if address == EVERY_HOST then return read_broadcast(length) end
  local octets = octets_of(address)
  return #octets == 4 and read_multicast(octets, length) or nil
end

function config.dissector(buffer, packet, tree)
  -- Captures may hold the beginning of each frame only.
  local length = buffer:reported_len()
  local meaning = read_config(tostring(packet.net_dst), length)
  if meaning == nil then return 0 end
  packet.cols.protocol = "ZORCONFIG"
  packet.cols.info = string.format("Version %d %s: %s", meaning.version, meaning.channel, meaning.text)
  local subtree = tree:add(config, buffer(), "Smart Configuration, " .. meaning.text)
  for _, name in ipairs({ "version", "channel", "kind", "offset", "bytes" }) do
    if meaning[name] ~= nil then subtree:add(config_fields[name], meaning[name]):set_generated() end
  end
  subtree:add(config_fields.length, length):set_generated()
  if meaning.contradicts then subtree:add_proto_expert_info(contradiction) end
  return buffer:len()
end

--------------------------------------------------------------------------------------------------------------
-- Lines: "tag:id:key=value,key=value,...", one in a datagram.

local line = Proto("zor_line", "Module Line")

local line_fields = {
  tag = ProtoField.string("zor_line.tag", "Tag"),
  id = ProtoField.string("zor_line.id", "ID"),
  pair = ProtoField.string("zor_line.pair", "Pair"),
  cmd = ProtoField.string("zor_line.cmd", "Command"),
  mac = ProtoField.string("zor_line.mac", "Module"),
  ver = ProtoField.string("zor_line.ver", "Version"),
  cap = ProtoField.string("zor_line.cap", "Capabilities"),
  ret = ProtoField.string("zor_line.ret", "Result"),
  status = ProtoField.string("zor_line.status", "Status"),
  host = ProtoField.string("zor_line.host", "Host"),
  port = ProtoField.string("zor_line.port", "Port"),
  file = ProtoField.string("zor_line.file", "File"),
}
line.fields = line_fields

local malformed = ProtoExpert.new("zor_line.malformed", "Not one key and one value", expert.group.MALFORMED,
                                  expert.severity.WARN)
line.experts = { malformed }

local KINDS = { xcmd_req = "request", xcmd_rsp = "response", xcmd_notify = "notification" }

-- Adds the piece of the line between two commas that starts at `start`, counted from 0.
local function add_pair(subtree, buffer, start, text)
  if text == "" then return end
  local range = buffer(start, #text)
  local key, value = text:match("^([^=]*)=([^=]*)$")
  local field = key ~= "pair" and key ~= "tag" and key ~= "id" and line_fields[key]
  if field then
    subtree:add_packet_field(field, buffer(start + #key + 1, #value), ENC_UTF_8)
  else
    local item = subtree:add_packet_field(line_fields.pair, range, ENC_UTF_8)
    if key == nil then item:add_proto_expert_info(malformed) end
  end
end

local function add_pairs(subtree, buffer, start, text)
  for offset, piece in text:gmatch("()([^,]*)") do
    add_pair(subtree, buffer, start + offset - 1, piece)
  end
end

function line.dissector(buffer, packet, tree)
  local text = buffer:raw():match("^[^\r\n]*")
  local tag, id, pairs_start = text:match("^(%a+_%a+):([^:]*):()")
  local kind = tag and KINDS[tag:lower()]
  if kind == nil then return 0 end
  packet.cols.protocol = "ZORLINE"
  packet.cols.info = kind .. " " .. text:sub(#tag + 2):gsub("[^\32-\126]", ".")
  local subtree = tree:add(line, buffer(), "Module Line, " .. kind)
  subtree:add_packet_field(line_fields.tag, buffer(0, #tag), ENC_UTF_8)
  subtree:add_packet_field(line_fields.id, buffer(#tag + 1, #id), ENC_UTF_8)
  add_pairs(subtree, buffer, pairs_start - 1, text:sub(pairs_start))
  return buffer:len()
end

--------------------------------------------------------------------------------------------------------------

local ports = DissectorTable.get("udp.port")
ports:add(CONFIG_PORT, config)
ports:add(MODULE_PORT, line)
ports:add(ANNOUNCEMENT_PORT, line) -- For another announcement port there is "Decode As".
