#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "movie/atoms/MovieFile.h"
#include "tests/support/FaultyCalls.h"

namespace movie::test {

/// A file in memory behind the system calls of a save: keeps a log of what changes it, and fails where it is told to.
/// Any path leads to it.
class SimulatedFile final : public sys::test::FaultyCalls {
 public:
  /// Something that changed the file, or made what came before durable.
  struct Change {
    Call call = Call::Write;   ///< Write, Sync or Resize
    std::uint64_t offset = 0;  ///< of a write; the new length of a resize
    Bytes bytes;
  };

  SimulatedFile(Bytes content, const FileStamp& stamp);
  SimulatedFile(SimulatedFile&&) noexcept;
  ~SimulatedFile() override;

  const Bytes& content() const;
  const std::vector<Change>& changes() const;
  std::size_t openDescriptors() const;

 private:
  class Memory;
  explicit SimulatedFile(std::unique_ptr<Memory> memory);

  std::unique_ptr<Memory> memory_;
};

}  // namespace movie::test
