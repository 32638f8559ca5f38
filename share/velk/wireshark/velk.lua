-- Dissector for the traces of velk (--trace FILE.pcapng): frames of a Velk serial link, link type USER0 (147).
--
--   tshark -X lua_script:velk.lua -r trace.pcapng
--
-- or copy it into the folder of personal Lua plug-ins. A packet is a frame as it was on the line; outbound packets go
-- to the PLC. Framing and byte order are found out from the bytes.

local velk = Proto("velk", "Velk Serial Link")

local ROUTING_SIZE, BLOCK_HEADER_SIZE, ACK_SIZE, ACK_CODE = 19, 8, 6, 10
local ROUTING_MARK, BLOCK_MARK, ACK_MARK = 0x4F, 0xAAAA, 0x5555
local LONGEST_PAYLOAD = 75000

local SERVICES = {
    [0x01] = "login", [0x02] = "logout", [0x2E] = "read variables", [0x31] = "open file",
    [0x32] = "next piece of the file", [0x3C] = "write variables", [0x42] = "link check",
}
local ORDERS = { [0] = "little-endian", [1] = "big-endian" }

local field = {
    toPlc = ProtoField.bool("velk.to_plc", "To the PLC"),
    order = ProtoField.uint8("velk.byte_order", "Byte order", base.DEC, ORDERS),
    kind = ProtoField.string("velk.kind", "Kind"),

    routing = ProtoField.none("velk.routing", "Routing header"),
    routingBlockSize = ProtoField.uint16("velk.routing.block_size", "Block size"),
    routingLevels = ProtoField.uint8("velk.routing.levels", "Levels"),
    routingHop = ProtoField.uint8("velk.routing.hop", "Hop"),
    routingAddress = ProtoField.ipv4("velk.routing.address", "Address"),
    routingStatus = ProtoField.uint8("velk.routing.status", "Status"),

    number = ProtoField.uint16("velk.number", "Block number"),
    length = ProtoField.uint16("velk.length", "Length"),
    checksum = ProtoField.uint8("velk.checksum", "Checksum", base.HEX),
    checksumRight = ProtoField.bool("velk.checksum.right", "Checksum is right"),
    last = ProtoField.bool("velk.last", "Last block"),
    payload = ProtoField.bytes("velk.payload", "Payload of the block"),
    code = ProtoField.uint16("velk.code", "Acknowledge code"),

    service = ProtoField.uint8("velk.service", "Service", base.HEX, SERVICES),
    status = ProtoField.uint16("velk.status", "Status"),
    meaning = ProtoField.string("velk.status.meaning", "Meaning"),
    size = ProtoField.uint32("velk.size", "Bytes"),
    project = ProtoField.uint32("velk.project", "Project identifier", base.HEX),
    items = ProtoField.uint32("velk.items", "Items"),
    item = ProtoField.none("velk.item", "Item"),
    itemArea = ProtoField.uint16("velk.item.area", "Area"),
    itemOffset = ProtoField.uint32("velk.item.offset", "Offset"),
    itemSize = ProtoField.uint32("velk.item.size", "Size"),
    itemQuality = ProtoField.uint8("velk.item.quality", "Quality"),
    itemValue = ProtoField.bytes("velk.item.value", "Value"),
    fileName = ProtoField.string("velk.file.name", "File"),
    fileMore = ProtoField.bool("velk.file.more", "More to come"),
    fileCount = ProtoField.uint16("velk.file.count", "Bytes of the file"),
    fileData = ProtoField.bytes("velk.file.data", "Piece of the file"),
    fault = ProtoField.string("velk.fault", "Fault"),
}
local list = {}
for _, each in pairs(field) do
    list[#list + 1] = each
end
velk.fields = list

local expert = {
    checksum = ProtoExpert.new("velk.expert.checksum", "Wrong checksum", expert.group.CHECKSUM, expert.severity.ERROR),
    malformed = ProtoExpert.new("velk.expert.malformed", "No right frame", expert.group.MALFORMED, expert.severity.ERROR),
    refused = ProtoExpert.new("velk.expert.refused", "Refused", expert.group.RESPONSE_CODE, expert.severity.WARN),
}
velk.experts = { expert.checksum, expert.malformed, expert.refused }

local direction = Field.new("frame.packet_flags_direction")
local comment = Field.new("frame.comment")

-- What is known of each packet by its number; filled when the packets are seen for the first time, in their order.
local known
-- The exchange under way.
local exchange
local function forget()
    known = {}
    exchange = { sent = nil, received = nil, request = nil, order = nil }
end
function velk.init()
    forget()
end

local function u16(range, order)
    return order == 1 and range:uint() or range:le_uint()
end

local function word(bytes, offset, order)
    return u16(bytes:range(offset, 2), order)
end

local function number32(bytes, offset, order)
    local range = bytes:range(offset, 4)
    return order == 1 and range:uint() or range:le_uint()
end

-- ---- frames

-- The order in which the word at an offset is `wanted`, when it is one of the two only.
local function orderThatGives(range, offset, wanted)
    local little = range(offset, 2):le_uint() == wanted
    local big = range(offset, 2):uint() == wanted
    if little == big then
        return nil
    end
    return big and 1 or 0
end

-- Splits a frame: where the part behind the routing header begins, its kind and its byte order.
local function splitFrame(range, toPlc, usual)
    local frame = { start = 0, kind = "no frame" }
    if range:len() > 0 and range(0, 1):uint() == ROUTING_MARK then
        if range:len() < ROUTING_SIZE then
            frame.fault = "a routing header stops after " .. range:len() .. " bytes"
            return frame
        end
        frame.routed = true
        frame.start = ROUTING_SIZE
    end
    local size = range:len() - frame.start
    local mark = size >= 2 and range(frame.start, 2):uint() or 0
    if mark == BLOCK_MARK and size >= BLOCK_HEADER_SIZE then
        local block = range(frame.start, size)
        frame.kind = "block"
        frame.order = orderThatGives(block, 2, size - BLOCK_HEADER_SIZE)
        frame.certain = frame.order ~= nil
        if frame.order == nil then
            frame.order = usual or (block(4, 2):uint() < block(4, 2):le_uint() and 1 or 0)
        end
        frame.number = u16(block(4, 2), frame.order)
    elseif mark == ACK_MARK and size >= ACK_SIZE then
        local acknowledge = range(frame.start, size)
        frame.order = orderThatGives(acknowledge, 2, ACK_CODE)
        frame.certain = frame.order ~= nil
        frame.order = frame.order or usual or 0
        frame.number = u16(acknowledge(4, 2), frame.order)
        frame.kind = frame.number ~= 0 and "acknowledge" or (toPlc and "turnaround" or "closing acknowledge")
    elseif mark == BLOCK_MARK then
        frame.fault = "the header of a block stops after " .. size .. " bytes"
    elseif mark == ACK_MARK then
        frame.fault = "an acknowledge stops after " .. size .. " bytes"
    elseif frame.routed and size == 0 then
        frame.fault = "nothing follows the routing header"
    else
        frame.fault = size .. " bytes that are not a frame"
    end
    return frame
end

local function checksumOf(block)
    local bytes, sum = block:bytes(), 0
    for i = 0, bytes:len() - 1 do
        if i ~= 6 then
            sum = sum + bytes:get_index(i)
        end
    end
    return sum % 256
end

-- ---- the exchange, followed while the packets are seen for the first time

local function collect(collected, frame, block, right)
    local due = collected.blocks + 1
    local size = block:len() - BLOCK_HEADER_SIZE
    if frame.number ~= due then
        frame.fault = "block " .. frame.number .. " instead of block " .. due
        collected.whole = false
    elseif not right or collected.bytes:len() + size > LONGEST_PAYLOAD then
        collected.whole = false
    else
        collected.blocks = due
        if size > 0 then
            collected.bytes:append(block(BLOCK_HEADER_SIZE, size):bytes())
        end
    end
end

local function newCollection()
    return { bytes = ByteArray.new(), blocks = 0, whole = true }
end

local function wholeOf(collected, last)
    return last and collected.whole and collected.blocks > 0
end

-- Answers what the frame completes.
local function follow(frame, range, toPlc)
    local info = { frame = frame }
    if frame.kind == "block" then
        local block = range(frame.start, range:len() - frame.start)
        local last = block(7, 1):uint() ~= 0
        local right = block(6, 1):uint() == checksumOf(block)
        if toPlc then
            if frame.number == 1 then
                exchange.sent, exchange.received, exchange.request = newCollection(), newCollection(), nil
            end
            exchange.sent = exchange.sent or newCollection()
            collect(exchange.sent, frame, block, right)
            if wholeOf(exchange.sent, last) then
                exchange.request = { bytes = exchange.sent.bytes, order = frame.order }
                info.request = exchange.request
            end
        else
            exchange.received = exchange.received or newCollection()
            collect(exchange.received, frame, block, right)
            if wholeOf(exchange.received, last) and exchange.request then
                info.response = { bytes = exchange.received.bytes, order = frame.order, request = exchange.request }
            end
        end
    end
    if frame.kind == "closing acknowledge" then
        exchange.order = nil -- the next station may have another one
    elseif frame.certain then
        exchange.order = frame.order
    end
    return info
end

-- ---- payloads

local function statusMeaning(service, status)
    if service == 0x42 then
        return "done", true
    end
    local list = service == 0x2E or service == 0x3C
    if list and (status == 0x48 or status == 0x33) then
        return "the PLC runs another project", false
    end
    if service == 0x01 then
        return status == 1000 and "login accepted" or "refused", status == 1000
    end
    return status == 0 and "done" or "refused", status == 0
end

local function fault(tree, text)
    local item = tree:add(field.fault, text)
    item:add_proto_expert_info(expert.malformed, text)
end

local function place(area, offset, size)
    if size == 0 then
        return string.format("area %d, bit %d.%d", area, math.floor(offset / 8), offset % 8)
    end
    return string.format("area %d, offset %d, %d bytes", area, offset, size)
end

-- The items of a list request; nil when its length does not fit.
local function itemsOf(request)
    local bytes, order = request.bytes, request.order
    if bytes:len() < 10 then
        return nil
    end
    local tvb = bytes:tvb("items")
    local write = bytes:get_index(0) == 0x3C
    local at, finish, items = 6, bytes:len() - 4, {}
    for _ = 1, number32(tvb, 2, order) do
        if at + 10 > finish then
            return nil
        end
        local item = { at = at, area = word(tvb, at, order), offset = number32(tvb, at + 2, order),
            size = number32(tvb, at + 6, order) }
        at = at + 10
        if write then
            item.valueAt = at
            at = at + math.max(item.size, 1)
            if at > finish then
                return nil
            end
        end
        items[#items + 1] = item
    end
    return at == finish and items or nil
end

local function addItem(tree, range, item)
    local branch = tree:add(field.item, range)
    branch:append_text(": " .. place(item.area, item.offset, item.size))
    branch:add(field.itemArea, item.area)
    branch:add(field.itemOffset, item.offset)
    branch:add(field.itemSize, item.size)
    return branch
end

local function showRequest(request, tree)
    local tvb = request.bytes:tvb("Request")
    local order = request.order
    local service = request.bytes:get_index(0)
    local name = SERVICES[service] or "unknown service"
    local branch = tree:add(velk, tvb:range(), "Request: " .. name)
    branch:add(field.service, tvb:range(0, 1))
    branch:add(field.size, tvb:len())
    local text = name
    if service == 0x2E or service == 0x3C then
        local items = itemsOf(request)
        if items == nil then
            fault(branch, "the length of the list does not fit its items")
        else
            branch:add(field.items, #items)
            branch:add(field.project, number32(tvb, tvb:len() - 4, order))
            for _, item in ipairs(items) do
                local one = addItem(branch, tvb:range(item.at, 10), item)
                if item.valueAt then
                    one:add(field.itemValue, tvb:range(item.valueAt, math.max(item.size, 1)))
                end
            end
            text = text .. ", " .. #items .. (#items == 1 and " item" or " items")
        end
    elseif service == 0x31 and tvb:len() > 5 then
        local range = tvb:range(4, tvb:len() - 5)
        branch:add(field.fileName, range)
        text = text .. ' "' .. range:string() .. '"'
    elseif SERVICES[service] == nil then
        fault(branch, string.format("there is no service %02X", service))
    end
    return text
end

local function showValues(tvb, items, branch)
    local at = 6
    for _, item in ipairs(items) do
        local size = item.size
        if size == 0 then -- bits; a single item may be an array of them
            size = #items == 1 and math.max(tvb:len() - at - 1, 1) or 1
        end
        if at + 1 + size > tvb:len() then
            fault(branch, "the reply ends before its items do")
            return
        end
        local one = addItem(branch, tvb:range(at, 1 + size), item)
        one:add(field.itemQuality, tvb:range(at, 1))
        one:add(field.itemValue, tvb:range(at + 1, size))
        at = at + 1 + size
    end
    if at < tvb:len() then
        fault(branch, (tvb:len() - at) .. " bytes follow the last item")
    end
end

local function showResponse(response, tree)
    local tvb = response.bytes:tvb("Response")
    local service = response.request.bytes:get_index(0)
    local name = SERVICES[service] or "unknown service"
    local branch = tree:add(velk, tvb:range(), "Response: " .. name)
    branch:add(field.service, service)
    branch:add(field.size, tvb:len())
    if tvb:len() < 2 then
        fault(branch, "there is no status word")
        return name .. ", no status word"
    end
    local status = word(tvb, 0, response.order)
    local meaning, good = statusMeaning(service, status)
    branch:add(field.status, tvb:range(0, 2), status)
    local item = branch:add(field.meaning, meaning)
    if not good then
        item:add_proto_expert_info(expert.refused, meaning)
    elseif service == 0x2E and tvb:len() >= 6 then
        local items = itemsOf(response.request)
        if items ~= nil then
            showValues(tvb, items, branch)
        end
    elseif (service == 0x31 or service == 0x32) and tvb:len() >= 6 then
        branch:add(field.fileMore, tvb:range(2, 2), word(tvb, 2, response.order) ~= 0)
        branch:add(field.fileCount, tvb:range(4, 2), word(tvb, 4, response.order))
        if tvb:len() > 6 then
            branch:add(field.fileData, tvb:range(6))
        end
    end
    return name .. ", " .. meaning
end

-- ---- the tree

local function showRouting(range, toPlc, tree)
    local branch = tree:add(field.routing, range(0, ROUTING_SIZE))
    branch:add_le(field.routingBlockSize, range(1, 2))
    branch:add(field.routingLevels, range(3, 1), bit.rshift(range(3, 1):uint(), 4))
    for _, at in ipairs({ 4, 10 }) do
        branch:add(field.routingHop, range(at, 1))
        branch:add(field.routingAddress, range(at + 1, 4))
    end
    local status = branch:add(field.routingStatus, range(17, 1))
    if not toPlc and range(17, 1):uint() ~= 0 then
        status:add_proto_expert_info(expert.malformed, "a coupler could not pass the frame on")
    end
end

local function showBlock(frame, block, tree)
    local right = checksumOf(block)
    tree:add(field.length, block(2, 2), u16(block(2, 2), frame.order))
    tree:add(field.number, block(4, 2), frame.number)
    local checksum = tree:add(field.checksum, block(6, 1))
    tree:add(field.checksumRight, block(6, 1), block(6, 1):uint() == right):set_generated()
    tree:add(field.last, block(7, 1), block(7, 1):uint() ~= 0)
    if block:len() > BLOCK_HEADER_SIZE then
        tree:add(field.payload, block(BLOCK_HEADER_SIZE))
    end
    local text = "block " .. frame.number .. (block(7, 1):uint() ~= 0 and ", the last" or "")
    if block(6, 1):uint() ~= right then
        checksum:add_proto_expert_info(expert.checksum, string.format("wrong checksum, should be %02X", right))
        text = text .. ", WRONG CHECKSUM"
    end
    if u16(block(2, 2), frame.order) ~= block:len() - BLOCK_HEADER_SIZE then
        fault(tree, "the length field differs from the bytes that came")
    end
    return text
end

function velk.dissector(buffer, pinfo, root)
    local range = buffer:range()
    local way = direction()
    local toPlc = way ~= nil and way.value == 2
    pinfo.cols.protocol = "VELK"
    pinfo.cols.src = toPlc and "panel" or "PLC"
    pinfo.cols.dst = toPlc and "PLC" or "panel"

    local tree = root:add(velk, range)
    tree:add(field.toPlc, toPlc):set_generated()
    local words = comment()
    if words ~= nil then
        pinfo.cols.info = words.value
        return buffer:len()
    end

    if known == nil then
        forget()
    end
    local info = known[pinfo.number]
    if info == nil then
        info = follow(splitFrame(range, toPlc, exchange.order), range, toPlc)
        known[pinfo.number] = info
    end

    local frame = info.frame
    local text = frame.kind
    tree:add(field.kind, frame.kind):set_generated()
    if frame.routed then
        showRouting(range, toPlc, tree)
    end
    if frame.order ~= nil then
        tree:add(field.order, frame.order):set_generated()
    end
    if frame.kind == "block" then
        text = showBlock(frame, range(frame.start, range:len() - frame.start), tree)
    elseif frame.number ~= nil then
        local code = range(frame.start + 2, 2)
        tree:add(field.code, code, u16(code, frame.order))
        tree:add(field.number, range(frame.start + 4, 2), frame.number)
        if frame.kind == "acknowledge" then
            text = "acknowledge of block " .. frame.number
        end
        if u16(code, frame.order) ~= ACK_CODE then
            fault(tree, "the acknowledge code is not 10")
        end
    end
    if frame.fault then
        fault(tree, frame.fault)
        text = text .. ": " .. frame.fault
    end
    if info.request and info.request.bytes:len() > 0 then
        text = text .. " | request: " .. showRequest(info.request, tree)
    end
    if info.response and info.response.bytes:len() > 0 then
        text = text .. " | response: " .. showResponse(info.response, tree)
    end
    pinfo.cols.info = text
    return buffer:len()
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, velk)
