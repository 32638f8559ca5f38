#pragma once

namespace _VELK {

/** Collects failures from the parts of the driver: the last error, and the communication fault. */
class ErrorSink {
public:
    /** Makes @p code and @p text the last error of @p driver. */
    using Record = void (*)(void* driver, int code, char const* text);

    /** @p driver is passed to @p record and must outlive the sink's use. */
    ErrorSink(void* driver, Record record) : driver_(driver), record_(record) {}

    /** Reports a failure; always false. */
    bool fail(int code, char const* text) const {
        report(code, text);
        return false;
    }

    /** Reports a failure that is also a communication fault; always false. */
    bool fault(int code, char const* text) {
        noteFault();
        return fail(code, text);
    }

    /** Reports, with code -1, a reason that contains a name; only @p after when there is no memory for all of it. */
    bool failNaming(char const* before, char const* name, char const* after) const {
        reportNaming(before, name, after);
        return false;
    }

    /** Notes a communication fault without setting a reason. */
    void noteFault() { communicationFault_ = true; }
    [[nodiscard]] bool hasCommunicationFault() const { return communicationFault_; }

private:
    void report(int code, char const* text) const;
    void reportNaming(char const* before, char const* name, char const* after) const;

    void* driver_;
    Record record_;
    bool communicationFault_ = false;
};

} // namespace _VELK
