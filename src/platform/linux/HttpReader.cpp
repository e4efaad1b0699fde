#include "platform/linux/HttpReader.h"

#include <algorithm>
#include <cctype>

namespace orvan {

namespace {

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string_view trim(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

// Does a comma-separated header value name `token`, in any case?
bool names(std::string_view value, std::string_view token) {
    while (!value.empty()) {
        auto comma = value.find(',');
        std::string_view piece = trim(value.substr(0, comma));
        if (lower(piece) == token) return true;
        if (comma == std::string_view::npos) break;
        value.remove_prefix(comma + 1);
    }
    return false;
}

std::optional<std::size_t> decimal(std::string_view text) {
    if (text.empty() || text.size() > 15) return std::nullopt;
    std::size_t n = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        n = n * 10 + static_cast<std::size_t>(c - '0');
    }
    return n;
}

std::optional<std::size_t> hex(std::string_view text) {
    if (text.empty() || text.size() > 12) return std::nullopt;
    std::size_t n = 0;
    for (char c : text) {
        int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
        if (digit < 0) return std::nullopt;
        n = n * 16 + static_cast<std::size_t>(digit);
    }
    return n;
}

} // namespace

HttpReader::State HttpReader::fail(std::string why) {
    if (state_ == State::Reading) {
        state_ = State::Failed;
        failure_ = std::move(why);
        body_.clear();
        body_.shrink_to_fit();
    }
    return state_;
}

// Gathers bytes up to a line's end. Lines of the head are bounded all together by `headerCap`.
bool HttpReader::takeLine(std::string_view& bytes, std::string& line, bool& complete) {
    auto end = bytes.find('\n');
    std::string_view piece = bytes.substr(0, end);
    headerBytes_ += piece.size() + (end == std::string_view::npos ? 0 : 1);
    if (headerBytes_ > headerCap) return false;
    line.append(piece);
    complete = end != std::string_view::npos;
    bytes.remove_prefix(complete ? end + 1 : bytes.size());
    if (complete && !line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

bool HttpReader::statusLine(const std::string& line) {
    // "HTTP/1.1 204 No Content": the version, then exactly three digits.
    if (line.size() < 12 || line.compare(0, 7, "HTTP/1.") != 0 || line[8] != ' ') return false;
    if (line[7] != '0' && line[7] != '1') return false;
    for (int i = 9; i < 12; ++i)
        if (line[static_cast<std::size_t>(i)] < '0' || line[static_cast<std::size_t>(i)] > '9') return false;
    if (line.size() > 12 && line[12] != ' ') return false;
    http10_ = line[7] == '0';
    status_ = std::stoi(line.substr(9, 3));
    return status_ >= 100;
}

bool HttpReader::header(const std::string& line) {
    auto colon = line.find(':');
    if (colon == std::string::npos || colon == 0) return false;
    std::string name = lower(line.substr(0, colon));
    if (name.find_first_of(" \t") != std::string::npos) return false;
    std::string_view value = trim(std::string_view(line).substr(colon + 1));
    if (name == "content-length") {
        auto n = decimal(value);
        if (!n || (length_ && *length_ != *n)) return false;
        length_ = n;
    } else if (name == "transfer-encoding") {
        // Only "chunked" frames a body; any other coding we would have to undo, and we asked for none.
        auto comma = value.rfind(',');
        if (lower(trim(value.substr(comma == std::string_view::npos ? 0 : comma + 1))) != "chunked") return false;
        chunked_ = true;
    } else if (name == "connection") {
        if (names(value, "close")) keepAlive_ = false;
        if (names(value, "keep-alive") && http10_) keepAlive_ = true;
    }
    return true;
}

HttpReader::State HttpReader::headersDone() {
    if (status_ < 200) {
        // An interim answer: the real one follows.
        if (status_ == 101) return fail("The bridge switched protocols.");
        phase_ = Phase::StatusLine;
        status_ = 0;
        length_.reset();
        chunked_ = false;
        keepAlive_ = true;
        return state_;
    }
    if (http10_ && keepAlive_) keepAlive_ = false;
    if (head_ || status_ == 204 || status_ == 304) {
        state_ = State::Done;
        return state_;
    }
    if (chunked_) {
        phase_ = Phase::ChunkSize;
        return state_;
    }
    if (length_) {
        if (*length_ > cap_) return fail("The answer is larger than the companion accepts.");
        body_.reserve(*length_);
        remaining_ = *length_;
        phase_ = Phase::Body;
        if (remaining_ == 0) state_ = State::Done;
        return state_;
    }
    untilClose_ = true;
    phase_ = Phase::UntilClose;
    return state_;
}

HttpReader::State HttpReader::append(std::string_view piece) {
    if (body_.size() + piece.size() > cap_) return fail("The answer is larger than the companion accepts.");
    body_.append(piece);
    return state_;
}

HttpReader::State HttpReader::feed(std::string_view bytes) {
    if (!bytes.empty()) started_ = true;
    while (state_ == State::Reading && !bytes.empty()) {
        bool complete = false;
        switch (phase_) {
        case Phase::StatusLine:
            if (!takeLine(bytes, line_, complete)) return fail("The answer's head is too long.");
            if (!complete) break;
            if (line_.empty() && status_ == 0) break; // a stray empty line before an answer
            if (!statusLine(line_)) return fail("The answer is not HTTP.");
            line_.clear();
            phase_ = Phase::Headers;
            break;
        case Phase::Headers:
            if (!takeLine(bytes, line_, complete)) return fail("The answer's head is too long.");
            if (!complete) break;
            if (line_.empty()) {
                headersDone();
            } else if (!header(line_)) {
                return fail("The answer's head is not valid HTTP.");
            }
            line_.clear();
            break;
        case Phase::Body: {
            std::size_t n = std::min(remaining_, bytes.size());
            append(bytes.substr(0, n));
            bytes.remove_prefix(n);
            remaining_ -= n;
            if (state_ == State::Reading && remaining_ == 0) state_ = State::Done;
            break;
        }
        case Phase::ChunkSize: {
            if (!takeLine(bytes, line_, complete)) return fail("The answer's chunks are not valid.");
            if (!complete) break;
            std::string_view size = trim(std::string_view(line_).substr(0, line_.find(';')));
            auto n = hex(size);
            if (!n) return fail("The answer's chunks are not valid.");
            if (*n > cap_ || body_.size() + *n > cap_) return fail("The answer is larger than the companion accepts.");
            line_.clear();
            remaining_ = *n;
            phase_ = *n == 0 ? Phase::Trailers : Phase::ChunkData;
            break;
        }
        case Phase::ChunkData: {
            std::size_t n = std::min(remaining_, bytes.size());
            append(bytes.substr(0, n));
            bytes.remove_prefix(n);
            remaining_ -= n;
            if (remaining_ == 0) phase_ = Phase::ChunkEnd;
            break;
        }
        case Phase::ChunkEnd:
            if (!takeLine(bytes, line_, complete)) return fail("The answer's chunks are not valid.");
            if (!complete) break;
            if (!line_.empty()) return fail("The answer's chunks are not valid.");
            phase_ = Phase::ChunkSize;
            break;
        case Phase::Trailers:
            if (!takeLine(bytes, line_, complete)) return fail("The answer's head is too long.");
            if (!complete) break;
            if (line_.empty()) state_ = State::Done;
            line_.clear();
            break;
        case Phase::UntilClose:
            append(bytes);
            bytes = {};
            break;
        }
    }
    if (state_ == State::Done && !bytes.empty()) {
        // More than one answer to one request: whatever sent it is not a bridge we can trust.
        state_ = State::Reading;
        return fail("The bridge sent more than one answer.");
    }
    return state_;
}

HttpReader::State HttpReader::closed() {
    if (state_ != State::Reading) return state_;
    if (phase_ == Phase::UntilClose) {
        state_ = State::Done;
        return state_;
    }
    return fail(started_ ? "The bridge closed the connection in the middle of its answer."
                         : "The bridge closed the connection without answering.");
}

} // namespace orvan
