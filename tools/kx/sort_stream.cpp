#include "sort_stream.h"

#include <algorithm>
#include <memory>

#include "command.h"

namespace kx {
namespace {

constexpr std::size_t kPiece = std::size_t{64} * 1024;

// Gathers what is written.
class Writer {
  public:
    explicit Writer(const SortRequest &request) : output_(kSortCommand, request.output) {}

    bool good() const noexcept { return output_.good(); }
    void add(ByteSpan bytes) {
        if (waiting_.size() + bytes.size() > kPiece) flush();
        if (bytes.size() > kPiece) {
            output_.write(bytes);
        } else {
            waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
        }
    }
    void add(std::string_view text) { add({reinterpret_cast<const std::uint8_t *>(text.data()), text.size()}); }
    bool close() {
        flush();
        return output_.close();
    }

  private:
    void flush() {
        output_.write(waiting_);
        waiting_.clear();
    }

    Output output_;
    Bytes waiting_;
};

bool would_overwrite(const SortRequest &request) {
    if (!is_one_of(request.output, request.inputs)) return false;
    report(kSortCommand, "the output is also an input");
    return true;
}

void tell_disorder(const LineInput &input, const KeptLine &line) {
    std::string text(line.bytes().begin(), line.bytes().end());
    // As far as it is of use to a reader: UTF-16 has zeros in it.
    text.resize(std::min({text.find_first_of("\r\n"), text.find('\0'), text.size()}));
    report(kSortCommand, input.name() + ':' + std::to_string(input.number()) + ": disorder: " + text);
}

} // namespace

int write_keys(const SortRequest &request, const Collation &collation) {
    if (would_overwrite(request)) return kFailure;
    LackingReport lacking(request);
    Writer writer(request);
    const Collation::Sink sink = [&writer](std::string_view piece) { writer.add(piece); };
    for (const std::string &path : request.inputs) {
        LineInput input(request, path);
        while (writer.good() && input.next(lacking)) {
            collation.write_key(input.text(), sink);
            writer.add("\t");
            writer.add(input.bytes());
            writer.add(input.missing_end());
        }
        if (!input.good() || !writer.good()) return kFailure;
    }
    const bool closed = writer.close();
    lacking.tell();
    return closed ? kSuccess : kFailure;
}

int check_order(const SortRequest &request, bool quiet) {
    LackingReport lacking(request);
    LineOrder order(request.order);
    LineInput input(request, request.inputs.front());
    KeptLine previous;
    KeptLine line;
    bool first = true;
    while (input.next(lacking)) {
        line.keep(order, input);
        const int result = first ? -1 : KeptLine::compare(order, previous, line);
        first = false;
        if (request.unique ? result >= 0 : result > 0) {
            if (!quiet) tell_disorder(input, line);
            return kFailure;
        }
        std::swap(previous, line);
    }
    if (!input.good()) return kFailure;
    if (!quiet) lacking.tell();
    return kSuccess;
}

int merge_inputs(const SortRequest &request) {
    if (would_overwrite(request)) return kFailure;
    struct Source {
        std::unique_ptr<LineInput> input;
        KeptLine line;
        std::size_t number;
    };
    LackingReport lacking(request);
    LineOrder order(request.order);
    std::vector<std::unique_ptr<Source>> sources;
    const auto advance = [&](Source &source) {
        if (!source.input->next(lacking)) return false;
        source.line.keep(order, *source.input);
        return true;
    };
    // The next one last, as heaps have it. Equal lines come in the order of the inputs.
    const auto is_behind = [&](const std::unique_ptr<Source> &a, const std::unique_ptr<Source> &b) {
        const int result = KeptLine::compare(order, a->line, b->line);
        return result != 0 ? result > 0 : a->number > b->number;
    };
    for (const std::string &path : request.inputs) {
        auto source = std::make_unique<Source>();
        source->input = std::make_unique<LineInput>(request, path);
        source->number = sources.size();
        const bool has_line = advance(*source);
        if (!source->input->good()) return kFailure;
        if (has_line) sources.push_back(std::move(source));
    }
    std::ranges::make_heap(sources, is_behind);
    Writer writer(request);
    KeptLine written;
    bool any = false;
    while (!sources.empty() && writer.good()) {
        std::ranges::pop_heap(sources, is_behind);
        Source &source = *sources.back();
        if (!request.unique || !any || KeptLine::compare(order, written, source.line) != 0) {
            writer.add(source.line.bytes());
            if (request.unique) std::swap(written, source.line);
            any = true;
        }
        if (advance(source)) {
            std::ranges::push_heap(sources, is_behind);
        } else if (source.input->good()) {
            sources.pop_back();
        } else {
            return kFailure;
        }
    }
    const bool closed = writer.close();
    lacking.tell();
    return closed ? kSuccess : kFailure;
}

} // namespace kx
