// A kernel's arguments, by type: Float3 is the next image input, Float2 one of which it wants the
// first two planes only, Float the alpha of the input before it, Pixel the place, Uniform the next
// parameter. Included once per form of the dialect.

template<class... Arguments>
struct Signature {
    // How many arguments of type T stand among the first `before`.
    template<class T>
    static constexpr int count(std::size_t before) {
        constexpr bool same[] = {std::is_same_v<T, Arguments>...};
        int n = 0;
        for (std::size_t i = 0; i < before; i++)
            n += same[i] ? 1 : 0;
        return n;
    }
    static constexpr int inputsBefore(std::size_t index) {
        return count<Float3>(index) + count<Float2>(index);
    }
    static constexpr int inputs = inputsBefore(sizeof...(Arguments));
    static constexpr int uniforms = count<Uniform>(sizeof...(Arguments));

    template<class T>
    static constexpr int rank(std::size_t index) {
        constexpr bool isInput = std::is_same_v<T, Float3> || std::is_same_v<T, Float2>;
        if constexpr (std::is_same_v<T, Float>)
            return inputsBefore(index) - 1;
        else
            return isInput ? inputsBefore(index) : count<T>(index);
    }
    // The colour planes that are read of input `n`.
    static constexpr int planesOf(int n) {
        constexpr int planes[] = {std::is_same_v<Float3, Arguments>   ? 3
                                  : std::is_same_v<Float2, Arguments> ? 2
                                                                      : 0 ...};
        for (int argument : planes)
            if (argument > 0 && n-- == 0) return argument;
        return 0;
    }
};

template<class... Arguments>
constexpr Signature<Arguments...> signatureOf(Float3 (*)(Arguments...)) {
    return {};
}

template<auto function, class Source, class... Arguments, std::size_t... index>
DIALECT_INLINE Float3 evaluateIndexed(const Source& source, Float3 (*)(Arguments...),
                                      std::index_sequence<index...>) {
    using S = Signature<Arguments...>;
    return function(
        source.get(static_cast<Arguments*>(nullptr), S::template rank<Arguments>(index))...);
}

// Calls the kernel with arguments from `source`, which has one get() per type.
template<auto function, class Source, class... Arguments>
DIALECT_INLINE Float3 evaluate(const Source& source, Float3 (*same)(Arguments...)) {
    return evaluateIndexed<function>(source, same, std::index_sequence_for<Arguments...>());
}
