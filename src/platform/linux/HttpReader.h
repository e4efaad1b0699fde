#pragma once
// Reads one HTTP/1.1 answer from the bytes of a connection as they arrive. It knows the three ways
// an answer's end is told (a length, chunks, or the connection closing), skips interim 1xx
// answers, and refuses an answer larger than its cap before keeping more of it.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvan {

class HttpReader {
public:
    enum class State { Reading, Done, Failed };

    explicit HttpReader(std::size_t cap, bool headRequest = false) : cap_(cap), head_(headRequest) {}

    // Takes the next bytes; answers the state after them. Bytes past the end of the answer are
    // a protocol fault on a connection that carries one request at a time.
    State feed(std::string_view bytes);
    // The connection closed: ends an answer whose end is the close, fails any other unfinished one.
    State closed();

    State state() const { return state_; }
    int status() const { return status_; }
    const std::string& body() const { return body_; }
    // Why reading failed, in words for a person.
    const std::string& failure() const { return failure_; }
    // The connection may carry another request after this answer.
    bool reusable() const { return state_ == State::Done && keepAlive_ && !untilClose_; }
    // Something of the answer has arrived (for telling a dropped request from a refused one).
    bool started() const { return started_; }

    static constexpr std::size_t headerCap = 64 * 1024;

private:
    enum class Phase { StatusLine, Headers, Body, ChunkSize, ChunkData, ChunkEnd, Trailers, UntilClose };

    State fail(std::string why);
    bool takeLine(std::string_view& bytes, std::string& line, bool& complete);
    bool statusLine(const std::string& line);
    bool header(const std::string& line);
    State headersDone();
    State append(std::string_view piece);

    std::size_t cap_;
    bool head_;
    State state_ = State::Reading;
    Phase phase_ = Phase::StatusLine;
    std::string line_;
    std::size_t headerBytes_ = 0;
    int status_ = 0;
    bool http10_ = false;
    bool keepAlive_ = true;
    bool untilClose_ = false;
    bool chunked_ = false;
    std::optional<std::size_t> length_;
    std::size_t remaining_ = 0;
    std::string body_;
    std::string failure_;
    bool started_ = false;
};

} // namespace orvan
