// The module's random stream: MT19937, as published by Makoto Matsumoto and Takuji Nishimura ("Mersenne Twister: A
// 623-Dimensionally Equidistributed Uniform Pseudo-Random Number Generator", ACM TOMACS 8 (1), 1998), with the improved
// seeding that the authors published in 2002, and a cheap noise value made of three draws.
//
// There is one stream, shared by all nodes and all render threads without a lock. This is on purpose: creating an
// Ambient Occlusion or Random node restarts the stream from a fixed seed, so that a render on one thread repeats
// exactly. Draws on several threads interleave. They may repeat or skip words, but the state stays valid: its words are
// atomics, accessed in relaxed order (plain loads and stores on common processors), and each draw reads the index once,
// so that it cannot run past the end of the state.
//
// Each draw on another thread moves the index and the words between processor caches, which costs as much as a ray. An
// evaluation that will draw many words therefore takes them ahead, all at once: see WordsAhead.
//
// No function fails. [any thread]
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace velm::plugin {

inline constexpr int kStateWords = 624;
inline constexpr int kNeverSeeded = kStateWords + 1;
inline constexpr uint32_t kCreationSeed = 3; // the seed from which creating a node that draws restarts the stream
inline constexpr double kPerInt32Closed = 1.0 / 4294967295.0;   // 1 / (2^32 - 1)
inline constexpr double kPerInt32HalfOpen = 1.0 / 4294967296.0; // 2^-32

// Thread-local variables at a fixed offset, which makes each access one instruction. Only ELF offers the choice.
#ifdef __ELF__
#define VELM_FIXED_PLACE [[gnu::tls_model("initial-exec")]]
#else
#define VELM_FIXED_PLACE
#endif

// Data that threads share is on cache lines of its own.
inline constexpr size_t kCacheLine = 64;
struct alignas(kCacheLine) StreamIndex : std::atomic<int> {
    using std::atomic<int>::atomic;
    using std::atomic<int>::operator=;
};

extern std::atomic<uint32_t> mt[kStateWords]; // the state vector
extern StreamIndex mti;                       // the index of the next word; kNeverSeeded before the first seed or draw

// Restarts the stream from a one-word seed.
void init_genrand(uint32_t seed);

// Restarts the stream from `length` words of key.
void init_by_array(const uint32_t *key, int length);

// Makes the next 624 words. Seeds the stream with 5489 first if nothing has seeded it, that is if `index`, the index
// that the draw read, is kNeverSeeded.
void refillState(int index);

inline uint32_t temper(uint32_t y) {
    y ^= y >> 11;
    y ^= (y << 7) & 0x9d2c5680u;
    y ^= (y << 15) & 0xefc60000u;
    return y ^ (y >> 18);
}

// Words that an evaluation takes from the stream before it uses them. They remain the next words of the stream for this
// thread: if the evaluation calls something that draws, such as other nodes, this gets them first, and the evaluation
// takes further words instead. So every draw of a thread returns the word that it would return if nothing were taken
// ahead. This requires that the evaluation uses all words that it takes before the end of the scope.
//
// Scopes nest as evaluations do. A scope belongs to the thread that created it.
class WordsAhead {
  public:
    static constexpr int kMost = 72; // of a scope: eight rays of three noise values each

    WordsAhead() : outer_(innermost) { innermost = this; }
    ~WordsAhead() { innermost = outer_; }
    WordsAhead(const WordsAhead &) = delete;
    WordsAhead &operator=(const WordsAhead &) = delete;

    // Takes words until `count` are left, at most kMost.
    void fill(int count);

    int left() const { return end_ - next_; }
    const uint32_t *words() const { return words_ + next_; } // the words that are left, tempered
    void use(int count) { next_ += count; }                  // at most left()

    // The next `count` words of the thread: first those taken ahead, from the innermost scope outwards, then those of
    // the stream.
    static void draw(uint32_t *words, int count) { drawFrom(innermost, words, count); }
    static bool any() { return innermost != nullptr; }

  private:
    static void drawFrom(WordsAhead *scope, uint32_t *words, int count);

    // Read by every draw. Because the declaration is constinit, no file calls an initialiser before it reads this.
    VELM_FIXED_PLACE static constinit thread_local WordsAhead *innermost;

    WordsAhead *outer_;
    int next_ = 0, end_ = 0;
    uint32_t words_[kMost]; // valid from next_ to end_
};

// Draws `count` successive words: the same words in the same order as `count` single draws.
template <int count>
inline void genrand_words(uint32_t (&words)[count]) {
    if (WordsAhead::any()) [[unlikely]] {
        WordsAhead::draw(words, count);
        return;
    }
    int index = mti.load(std::memory_order_relaxed);
    for (int i = 0; i < count; ++i) {
        if (index >= kStateWords) [[unlikely]] {
            refillState(index);
            index = 0;
        }
        words[i] = temper(mt[index++].load(std::memory_order_relaxed));
    }
    mti.store(index, std::memory_order_relaxed);
}

// Uniform on [0, 0xffffffff].
inline uint32_t genrand_int32() {
    uint32_t word[1];
    genrand_words(word);
    return word[0];
}

// Uniform on [0, 0x7fffffff].
inline uint32_t genrand_int31() { return genrand_int32() >> 1; }

// Uniform on [0, 1], both ends included.
inline double genrand_real1() { return genrand_int32() * kPerInt32Closed; }

// Uniform on [0, 1).
inline double genrand_real2() { return genrand_int32() * kPerInt32HalfOpen; }

// The noise value of three words. gaussianNoise draws them from the stream.
inline constexpr int kWordsOfNoise = 3;
inline double noiseOfWords(uint32_t first, uint32_t second, uint32_t third) {
    // The constants are single precision and the sums double, as they have always been.
    constexpr int q = 15; // bit depth of the noise quantiser
    constexpr float c1 = static_cast<float>((1 << q) - 1);
    constexpr float c2 = static_cast<float>(static_cast<int>(c1 * 0.33333334f) + 1);
    constexpr float c3 = 1.0f / c1;
    constexpr float d = (c2 - 1.0f) * -3.0f;
    const double s = first * kPerInt32HalfOpen * c2 + second * kPerInt32HalfOpen * c2 + third * kPerInt32HalfOpen * c2;
    return (s + s + d) * c3;
}

// Approximately normal noise in [-32766/32767, 32772/32767), with a standard deviation of about 1/3: the rescaled sum
// of three uniform draws (an Irwin-Hall approximation). Its mean is 3/32767, not 0. No picture shows this bias, and it
// stays because scenes have been tuned with it.
double gaussianNoise();

} // namespace velm::plugin
