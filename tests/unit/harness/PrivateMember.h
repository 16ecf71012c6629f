// Reaches a private member from a test without a change to the class.
#pragma once

/// The private member that `Tag` stands for:
///
///     struct Update { using Type = void (Renderer::*)(float) const; };
///     template struct Reveal<Update, &Renderer::Update>;
///     (renderer.*Revealed<Update>::pointer)(1.0f);
///
/// Access rules do not apply to the arguments of an explicit instantiation. For what a class must do in a
/// member function that its public operations do not reach one by one.
template<typename Tag>
struct Revealed {
    static inline typename Tag::Type pointer = nullptr;
};

template<typename Tag, typename Tag::Type Pointer>
struct Reveal {
    static inline bool const done = (Revealed<Tag>::pointer = Pointer) != nullptr;
};
