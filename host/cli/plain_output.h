// Standard output, for people.
#pragma once

#include <ostream>
#include <streambuf>

namespace velm::host {

// Passes text on to another stream, with its control characters, other than line ends, as escape sequences ("\\x1b"):
// the names and texts of modules and files cannot control a terminal. JSON passes unchanged if it comes from
// escapedJson(). [one thread at a time]
class PlainOutput : public std::ostream {
  public:
    // `to` has to outlive this object. When it fails, so does this stream.
    explicit PlainOutput(std::ostream &to) : std::ostream(nullptr), buffer_(to) { rdbuf(&buffer_); }

  private:
    class Buffer : public std::streambuf {
      public:
        explicit Buffer(std::ostream &to) : to_(to) {}

      protected:
        int_type overflow(int_type letter) override;
        std::streamsize xsputn(const char *letters, std::streamsize count) override;
        int sync() override;

      private:
        std::ostream &to_;
    };

    Buffer buffer_;
};

} // namespace velm::host
