#include "host/instance/ConfigText.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace host {

namespace {

/** Joins the entries of a configuration string and keeps the first failure. */
class Writer {
public:
    void number(std::string const& key, int value) { entry(key, std::to_string(value)); }

    void text(std::string const& key, std::string const& value) {
        if (char const* const trouble = whyNotCarried(value)) {
            fail("the value of " + key + " must not contain " + trouble);
            return;
        }
        std::string carried;
        for (char const c : value) {
            if (c == ' ') {
                carried += "&nbsp;";
            } else {
                carried += c;
            }
        }
        entry(key, carried);
    }

    void number(std::string const& key, std::optional<int> const& value) {
        if (value) {
            number(key, *value);
        }
    }
    void text(std::string const& key, std::optional<std::string> const& value) {
        if (value) {
            text(key, *value);
        }
    }

    void fail(std::string text) {
        if (!failure_) {
            failure_ = base::Failure{base::FailureKind::Usage, std::move(text)};
        }
    }

    base::Result<std::string> take() { return failure_ ? base::Result<std::string>(*failure_) : text_; }

private:
    static char const* whyNotCarried(std::string_view value) {
        constexpr unsigned char kDelete = 0x7F;
        auto const isControl = [](char c) {
            auto const byte = static_cast<unsigned char>(c);
            return byte < ' ' || byte == kDelete;
        };
        if (std::any_of(value.begin(), value.end(), isControl)) {
            return "tabs, line ends or control characters";
        }
        for (char const* const mark : {"&nbsp;", "CfgVer=", "::"}) {
            if (value.find(mark) != std::string_view::npos) {
                return mark;
            }
        }
        return nullptr;
    }

    void entry(std::string const& key, std::string const& value) { text_ += " " + key + "=" + value; }

    std::string text_ = "CfgVer=1";
    std::optional<base::Failure> failure_;
};

/** The same keys for every node (@p prefix empty) and for one (@p prefix "Node3::"). */
template <typename Settings>
void writeNode(Writer& writer, std::string const& prefix, Settings const& settings) {
    writer.number(prefix + "BlockSize", settings.blockSize);
    writer.number(prefix + "Timeout", settings.timeoutMs);
    writer.number(prefix + "repeat", settings.repeat);
    writer.text(prefix + "model", settings.model);
    writer.number(prefix + "RoutingLevels", settings.routingLevels);
    writer.text(prefix + "CouplerLV1", settings.coupler1);
    writer.number(prefix + "ChannelLV1", settings.channel1);
    writer.text(prefix + "AddressLV1", settings.address1);
    writer.text(prefix + "CouplerLV2", settings.coupler2);
    writer.number(prefix + "ChannelLV2", settings.channel2);
    writer.text(prefix + "AddressLV2", settings.address2);
}

void writeLine(Writer& writer, DriverConfig const& config) {
    writer.text("uart", config.uart);
    writer.text("parity", config.parity);
    writer.number("baudrate", config.baudrate);
    writer.number("stopbits", config.stopbits);
    writer.text("mode", config.mode);
    writer.text("protType", config.protType);
}

void writeOverrides(Writer& writer, std::vector<NodeOverrides> const& nodes) {
    std::set<int> seen;
    for (NodeOverrides const& node : nodes) {
        std::string const number = std::to_string(node.node);
        if (node.node < 0) {
            writer.fail("the node number " + number + " is negative");
        }
        if (!seen.insert(node.node).second) {
            writer.fail("the node " + number + " is configured twice");
        }
        std::string const prefix = "Node" + number + "::";
        writer.text(prefix + "prefix", node.prefix);
        writeNode(writer, prefix, node);
    }
}

} // namespace

base::Result<std::string> configText(DriverConfig const& config) {
    Writer writer;
    writeLine(writer, config);
    writeNode(writer, "", config.nodes);
    writeOverrides(writer, config.nodeOverrides);
    return writer.take();
}

} // namespace host
