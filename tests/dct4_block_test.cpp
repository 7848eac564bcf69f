// A planned block against a model of it, word for word: where every object, list record, table and scratch stands, what
// each member holds, where the arena's head is after planning, after a failed plan and after a teardown. The model reads
// the block by offsets and shares no declaration with the planner.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <deque>
#include <vector>

#include "dct4/public_api.h"
#include "tests/dct4_radix.h"

using xfm::dct4::Api;

#define METHODS(tag, env) void owngDCT4_##tag##g9_##env##___del__(void*); XfmStatus owngDCT4_##tag##g9_##env##_plan(void*);
#define FUNCTION_METHODS(tag, Real, name)                                                                               \
  void owngDCT4_##tag##g9_env##name##___del__(void*); Real owngDCT4_##tag##g9_env##name##_at(const void*, int, int, int);
#define CLASSES(tag, Real)                                                                                              \
  METHODS(tag, env1) METHODS(tag, env2) METHODS(tag, env3) METHODS(tag, env4) METHODS(tag, env5) METHODS(tag, env7)      \
  METHODS(tag, env8) METHODS(tag, env9) FUNCTION_METHODS(tag, Real, fCompose) FUNCTION_METHODS(tag, Real, fsplit)       \
  FUNCTION_METHODS(tag, Real, lambda)
extern "C" {
CLASSES(32f, float)
CLASSES(64f, double)
}

namespace {

using Address = uintptr_t;

template <class F>
Address address(F* function) { return reinterpret_cast<Address>(function); }

struct Class {
  Address del, method;  // the method is `at` for function objects, else `plan`
};

struct Classes {
  Class env[10], compose, split, lambda;
  void (*tear_down)(void*);
};

#define CLASS(tag, number) {address(owngDCT4_##tag##g9_env##number##___del__), address(owngDCT4_##tag##g9_env##number##_plan)}
#define FUNCTION(tag, name) {address(owngDCT4_##tag##g9_env##name##___del__), address(owngDCT4_##tag##g9_env##name##_at)}
#define ALL_CLASSES(tag)                                                                                            \
  Classes{{{}, CLASS(tag, 1), CLASS(tag, 2), CLASS(tag, 3), CLASS(tag, 4), CLASS(tag, 5), {}, CLASS(tag, 7),        \
           CLASS(tag, 8), CLASS(tag, 9)}, FUNCTION(tag, fCompose), FUNCTION(tag, fsplit), FUNCTION(tag, lambda),    \
          owngDCT4_##tag##g9_env1___del__}
Classes classes_of(float) { return ALL_CLASSES(32f); }
Classes classes_of(double) { return ALL_CLASSES(64f); }

struct Word {
  Address at;
  int bytes;
  uint64_t value;
};

int64_t charge(int64_t bytes) { return (bytes + 31) / 32 * 32; }

class Model {
 public:
  Model(const Classes& classes, int lanes, Address block)
      : classes_(classes), lanes_(lanes), element_(32 / lanes), arena_(block), head(block + 64 - block % 32) {}

  // Plans; false where the length is refused, with the tree as far as it came.
  bool plan(int n) {
    root_ = &make(80, 2);
    const bool planned = grow_root(n);
    for (const List& l : lists_) expect_list(l);
    return planned;
  }
  // What the root's __del__ moves the head back by: everything but the root itself.
  int64_t torn_down() const { return released(*root_); }

 private:
  struct List {
    std::vector<Address> records, items;
  };
  struct Object {
    Address at;
    int64_t size;
    std::vector<List*> stages;
    List* children = nullptr;
    std::vector<Object*> owned;
    int64_t memory = 0;  // of its table or scratch, released whether it came to be allocated or not
  };

  Address take(int64_t bytes) {
    const Address at = head;
    head += charge(bytes);
    return at;
  }
  List* list() {
    lists_.push_back({{take(24)}, {}});
    return &lists_.back();
  }
  void add(List* l, Address item) {
    if (!l->items.empty()) l->records.push_back(take(24));
    l->items.push_back(item);
  }
  Object& bare(int64_t size) {
    objects_.push_back({take(size), size, {}, nullptr, {}});
    return objects_.back();
  }
  void give_lists(Object& o, int stages) {
    for (int i = 0; i < stages; ++i) o.stages.push_back(list());
    o.children = list();
  }
  Object& make(int64_t size, int stages) {
    Object& o = bare(size);
    give_lists(o, stages);
    return o;
  }
  void own(Object& parent, Object& child) {
    add(parent.children, child.at);
    parent.owned.push_back(&child);
  }

  void word(Address at, int bytes, uint64_t value) { words.push_back({at, bytes, bytes == 4 ? value & 0xFFFFFFFFu : value}); }
  void expect(const Object& o, const Class& c, const std::vector<Address>& pointers, const std::vector<int64_t>& numbers,
              Address function = 0) {
    word(o.at, 8, c.del), word(o.at + 8, 4, static_cast<uint64_t>(o.size)), word(o.at + 16, 8, c.method), word(o.at + 24, 8, arena_);
    Address at = o.at + 32;
    for (const Address p : pointers) word(at, 8, p), at += 8;
    for (const int64_t x : numbers) word(at, 4, static_cast<uint64_t>(x)), at += 4;
    if (function != 0) word((at + 7) / 8 * 8, 8, function);
  }
  void expect_list(const List& l) {
    for (size_t i = 0; i < l.records.size(); ++i) {
      word(l.records[i], 8, l.items.empty() ? 0 : l.items[i]);
      word(l.records[i] + 8, 8, i + 1 < l.records.size() ? l.records[i + 1] : 0);
      word(l.records[i] + 16, 8, arena_);
    }
  }
  static Address first(const List* l) { return l->records[0]; }

  static int64_t released(const List* l) { return 32 * static_cast<int64_t>(l->records.size()); }
  static int64_t released(const Object& o) {
    int64_t sum = charge(o.memory);
    for (const List* l : o.stages) sum += released(l);
    for (const Object* child : o.owned) sum += released(*child) + charge(child->size);
    return o.children == nullptr ? sum : sum + released(o.children);
  }

  static int log2(int64_t x) { return std::bit_width(static_cast<uint64_t>(x)) - 1; }
  static bool power(int64_t x, int64_t most) { return x >= 2 && x <= most && (x & (x - 1)) == 0; }
  static int64_t part_rule(int64_t m) { return power(m, 64) ? log2(m) : 7; }

  bool grow_root(int64_t n) {
    Object& o = *root_;
    const int64_t most = lanes_ == 8 ? 64 : 32;
    const bool direct = power(n, most);
    const int64_t rule = direct ? log2(n) : log2(most) + 1, d = direct ? 0 : radix_of(n / 2);
    Address scratch = 0;
    if (!direct) o.memory = n * element_;
    const bool grown = direct || (d != 0 && grow_groups(o, n, d) && grow_columns(o, n, d));
    if (grown && !direct) scratch = take(o.memory);
    expect(o, classes_.env[1], {first(o.children), first(o.stages[0]), first(o.stages[1]), scratch}, {rule});
    if (d != 0) word(o.at + 68, 4, static_cast<uint64_t>(d));
    word(o.at + 72, 4, static_cast<uint64_t>(n));
    return grown;
  }

  bool grow_groups(Object& root, int64_t n, int64_t d) {
    const int64_t rows = n / (2 * d), chunks = rows / lanes_;
    Object &env2 = bare(96), &compose = bare(56);
    give_lists(env2, 1), own(root, compose), own(root, env2), add(root.stages[0], env2.at);
    const bool whole = rows % lanes_ == 0;
    expect(compose, classes_.compose, {}, {2 * d, 8 * n, rows, d, 2 * d});
    if (whole) {
      Object &env4 = bare(96), &split = bare(48);
      give_lists(env4, 0), own(env2, split), own(env2, env4), add(env2.stages[0], env4.at);
      env4.memory = 2 * d * chunks * 32;
      const Address table = take(env4.memory);
      expect(split, classes_.split, {}, {2 * d, chunks}, compose.at);
      expect(env4, classes_.env[4], {first(env4.children), table},
             {log2(d) + 1, d, n, 2 * d, 2 * d * lanes_, chunks, n, 2 * n - 1, n / d}, split.at);
    }
    expect(env2, classes_.env[2], {first(env2.children), first(env2.stages[0]), 0},
           {whole, d, n, 2 * d, rows, n, 2 * n - 1, n / d}, compose.at);
    return whole;
  }

  bool grow_columns(Object& root, int64_t n, int64_t d) {
    Object& env3 = make(88, 1);
    own(root, env3), add(root.stages[1], env3.at);
    const bool whole = d % lanes_ == 0;
    bool grown = whole;
    if (whole) {
      Object& env5 = make(88, 1);
      own(env3, env5), add(env3.stages[0], env5.at);
      const int64_t m = n / d;
      if (part_rule(m) == 7) grown = grow_split(env5, {m, n, n, 2 * d, n, d});
      expect(env5, classes_.env[5], {first(env5.children), first(env5.stages[0]), 0},
             {part_rule(m), m, n, 2 * n - 1, 2 * d, d / lanes_, n, d});
    }
    expect(env3, classes_.env[3], {first(env3.children), first(env3.stages[0]), 0}, {whole, n / d, n, 2 * n - 1, 2 * d, d, n, d});
    return grown;
  }

  struct Outer {
    int64_t m, a, b, span, length, stride;
  };

  bool grow_split(Object& parent, const Outer& outer) {
    Object& env7 = make(96, 2);
    own(parent, env7), add(parent.stages[0], env7.at);
    env7.memory = outer.length * element_;
    const int64_t d = radix_of(outer.m / 2);
    const bool grown = d != 0 && (grow_combination(env7, outer, d), grow_parts(env7, outer, d));
    const Address scratch = grown ? take(env7.memory) : 0;
    expect(env7, classes_.env[7], {first(env7.children), first(env7.stages[0]), first(env7.stages[1]), scratch},
           {1, outer.m, d, outer.a, outer.b, outer.span, outer.length, outer.stride});
    return grown;
  }

  void grow_combination(Object& env7, const Outer& outer, int64_t d) {
    Object &env8 = bare(104), &lambda = bare(40);
    give_lists(env8, 0), own(env7, lambda), own(env7, env8), add(env7.stages[0], env8.at);
    const int64_t m = outer.m, chunks = m / (2 * d);
    env8.memory = (2 * d - 2) * chunks * 32;
    const Address table = take(env8.memory);
    expect(lambda, classes_.lambda, {}, {m, d});
    expect(env8, classes_.env[8], {first(env8.children), table},
           {log2(d), d, outer.length, outer.stride, 2 * outer.stride * d, chunks, outer.length, m / 2, m - 1, outer.stride, m / d},
           lambda.at);
  }

  bool grow_parts(Object& env7, const Outer& outer, int64_t d) {
    Object& env9 = make(96, 1);
    own(env7, env9), add(env7.stages[1], env9.at);
    const int64_t m = outer.m / d;
    bool grown = true;
    if (part_rule(m) == 7) grown = grow_split(env9, {m, outer.a, outer.b, d * outer.span, outer.length, outer.stride * d});
    expect(env9, classes_.env[9], {first(env9.children), first(env9.stages[0]), 0},
           {part_rule(m), m, outer.a, outer.b, d * outer.span, outer.span, d, outer.length, outer.stride * d, outer.stride});
    return grown;
  }

  const Classes& classes_;
  const int64_t lanes_, element_;
  const Address arena_;
  std::deque<List> lists_;
  std::deque<Object> objects_;
  Object* root_ = nullptr;

 public:
  Address head;
  std::vector<Word> words;
};

template <class T>
class Dct4Block : public testing::Test {
 protected:
  using State = typename Api<T>::State;

  Dct4Block() : classes_(classes_of(T{})) {}

  // Plans a length in memory that has room for what a refused one takes before it is refused.
  XfmStatus init(int n, int shift) {
    int bytes = 0;
    const size_t room = Api<T>::size(n, &bytes) == xfmStatusOk ? bytes : 64 * static_cast<size_t>(std::max(n, 0)) + 65536;
    memory_.assign(room + 64 + shift, 0xA5);
    block_ = (address(memory_.data()) + 31) / 32 * 32 + shift;
    return Api<T>::init(&state_, n, reinterpret_cast<void*>(block_));
  }
  Address head() const { return read(block_, 8); }
  static uint64_t read(Address at, int bytes) {
    uint64_t value = 0;
    std::memcpy(&value, reinterpret_cast<const void*>(at), bytes);
    return value;
  }

  const Classes classes_;
  std::vector<unsigned char> memory_;
  Address block_ = 0;
  State* state_ = nullptr;
};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(Dct4Block, Precisions);

}  // namespace

TYPED_TEST(Dct4Block, IsTheModelToTheWord) {
  std::vector<int> lengths = {(1 << 7) + 1, (1 << 12) + 1};
  for (int e = 1; e <= 17; ++e) lengths.push_back(1 << e);
  for (const int shift : {0, 3, 31})
    for (const int n : lengths) {
      if (this->init(n, shift) != xfmStatusOk) {
        ADD_FAILURE() << n << " is refused";
        continue;
      }
      Model model(this->classes_, Api<TypeParam>::kLanes, this->block_);
      const Address start = model.head;
      ASSERT_TRUE(model.plan(n)) << n;
      EXPECT_EQ(address(this->state_), start);
      for (const Word& w : model.words)
        ASSERT_EQ(this->read(w.at, w.bytes), w.value) << n << ", byte " << w.at - start << " from the root on";
      EXPECT_EQ(this->head(), model.head) << n;
      if (n == 128 && sizeof(TypeParam) == 4) {
        int bytes = 0;
        EXPECT_EQ(Api<TypeParam>::size(n, &bytes), xfmStatusOk);
        EXPECT_EQ(model.head - this->block_, bytes - 224 - (shift == 0 ? 0 : shift)) << shift;
      }
      this->classes_.tear_down(this->state_);
      EXPECT_EQ(this->head(), model.head - model.torn_down()) << n;
      EXPECT_EQ(this->head(), start + 96) << n;
    }
}

TYPED_TEST(Dct4Block, ARefusedLengthUnwindsByTheRules) {
  int refused = 0;
  for (int n = -3; n <= 3100; ++n) {
    int bytes = 0;
    if (Api<TypeParam>::size(n, &bytes) == xfmStatusOk) continue;
    ++refused;
    ASSERT_EQ(this->init(n, 0), xfmStatusSizeError) << n;
    EXPECT_EQ(this->state_, nullptr);
    Model model(this->classes_, Api<TypeParam>::kLanes, this->block_);
    ASSERT_FALSE(model.plan(n)) << n;
    ASSERT_EQ(this->head(), model.head - model.torn_down() - charge(80)) << n;
  }
  EXPECT_GT(refused, 3000);
  const std::vector<std::pair<int, int>> known = sizeof(TypeParam) == 4
                                                     ? std::vector<std::pair<int, int>>{{17, -32}, {96, -320}, {768, -12224}}
                                                     : std::vector<std::pair<int, int>>{{17, -96}, {96, -704}, {768, -24512}};
  for (const auto& [n, below] : known) {
    ASSERT_EQ(this->init(n, 0), xfmStatusSizeError);
    EXPECT_EQ(static_cast<int64_t>(this->head() - this->block_), below) << n;
  }
}
