#include "qel/property/property.hpp"

#include <mutex>
#include <sstream>
#include <stdexcept>

namespace qel::property {

using configuration::node::Value;

namespace {

template <class T>
bool Write(std::ostream& stream, object::Object const& value) {
    if (!value.Is<object::Primitive<T>>()) return false;
    if constexpr (std::is_same_v<T, unsigned char>) {
        stream << int{value.As<object::Primitive<T>>().Get()};
    } else {
        stream << value.As<object::Primitive<T>>().Get();
    }
    return true;
}

template <class... T>
std::string ToText(object::Object const& value) {
    std::ostringstream text;
    text.exceptions(std::ios::badbit);  // memory that is missing is told
    text << std::boolalpha;
    if (!(Write<T>(text, value) || ...)) text << value.GetTypeName();
    return text.str();
}

}  // namespace

// The model is a node of no tree that holds the value that the owner was given last. It is what setters are called
// with, and tells a change of the node from the echo of a change of the property. Making one converts and checks a
// value.
//
// Whatever takes memory comes before the owner is given a value; from then on only the owner's own setter can fail.
struct Property::Impl {
    Impl(Schema description, void* object, std::shared_ptr<Value> bound)
        : schema(std::move(description)),
          owner(object),
          model(MakeModel(*schema.GetValue().GetDefault())),
          node(std::move(bound)) {}

    /// The value that the owner has, or would have from the model. The mutex is held.
    std::shared_ptr<object::Object const> Read() const {
        return schema.GetGetter() ? schema.GetGetter()(owner) : model->GetValue();
    }

    std::shared_ptr<Value> MakeModel(object::Object const& value) const {
        return schema.GetValue().Make(schema.GetName(), value)->GetPtr<Value>();
    }

    /// Gives the owner a value; when that fails, the model stays what it was. The mutex is held.
    void Apply(object::Object const& value) {
        auto next = MakeModel(value);
        schema.GetSetter()(owner, *next);
        model.swap(next);
    }

    /// Makes current what has been staged in the node, and has it tell so if that is a change. Takes no memory.
    void Announce() const {
        auto const former = node->GetValue();
        node->Commit();
        if (node->GetValue() != former) node->Fire();
    }

    /// Takes over what the node holds, unless the owner was given just that.
    void Follow() {
        std::lock_guard const lock(mutex);
        if (hasStarted && model->EqualTo(*node)) return;
        Apply(*node->GetValue());
        hasStarted = true;
    }

    void CheckOwner() const {
        if (owner == nullptr) throw std::logic_error(schema.GetName() + ": the property has no owner");
    }

    Schema const schema;
    void* const owner;
    std::shared_ptr<Value> model;
    std::shared_ptr<Value> const node;
    mutable std::mutex mutex;
    // Whether the owner has the node's first value.
    bool hasStarted = false;
    // Last, so that no handler runs any more when the others go.
    type::Binding binding;
};

Property::Property(Schema schema, void* owner, std::shared_ptr<Value> node)
    : impl_(std::make_unique<Impl>(std::move(schema), owner, std::move(node))) {
    if (!impl_->node || owner == nullptr) return;
    if (impl_->node->GetTypeId() != impl_->model->GetTypeId()) {
        throw impl_->node->BadCastError(impl_->model->GetTypeName());
    }
    if (impl_->schema.GetSetter()) {
        impl_->binding = impl_->node->Bind([impl = impl_.get()](auto const& /*event*/) { impl->Follow(); },
                                           {configuration::node::binding::Option::CallNow});
    } else {
        Publish();
    }
}

Property::~Property() = default;

Schema const& Property::GetSchema() const noexcept { return impl_->schema; }

bool Property::IsBound() const noexcept { return impl_->node != nullptr && impl_->owner != nullptr; }

std::shared_ptr<object::Object const> Property::GetValue() const {
    impl_->CheckOwner();
    std::lock_guard const lock(impl_->mutex);
    return impl_->Read();
}

void Property::Set(object::Object const& value) {
    impl_->CheckOwner();
    if (GetSchema().IsReadOnly()) {
        throw std::logic_error(
            GetName() + ": the value " +
            ToText<std::string, bool, unsigned char, std::int32_t, std::int64_t, std::uint32_t, double>(value) +
            " cannot be set, the property is read only");
    }
    {
        std::lock_guard const lock(impl_->mutex);
        if (!impl_->node) return impl_->Apply(value);
        // The node refuses first what it does not take.
        impl_->node->Stage(value);
        try {
            impl_->Apply(value);
        } catch (...) {
            impl_->node->Discard();
            throw;
        }
    }
    // Handlers may use the property, so the mutex is free; the echo of this change finds the model up to date.
    impl_->Announce();
}

void Property::Publish() {
    if (!IsBound()) return;
    {
        std::lock_guard const lock(impl_->mutex);
        auto const value = impl_->Read();
        auto next = impl_->MakeModel(*value);
        impl_->node->Stage(*value);
        impl_->model.swap(next);
    }
    impl_->Announce();
}

}  // namespace qel::property
