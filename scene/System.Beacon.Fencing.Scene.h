// What a scene consists of, as interfaces; modes; and the registry that announces nodes. Scene
// thread only, all of it.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/enum_set.h"
#include "platform/guid.h"
#include "platform/ref.h"
#include "platform/reflection.h"
#include "scene/System.Beacon.Fencing.Scene.Events.h"

namespace System::Beacon::Fencing::Scene {

// ---------------------------------------------------------------- modes

/// `Visible`: the node and what is below it are painted. `Edit`: an aid of editors that is not
/// stored. `Active`: the node and what is below it are found under a point.
enum class TMode : std::uint8_t { Visible, Edit, Active };

/// A set of modes as a code of 32 bits: bit n for ordinal n. Other bits may be set, too.
class TModeSet {
 public:
  using TModeSetSet = TSet<TMode>;

  constexpr TModeSet() = default;
  constexpr TModeSet(std::initializer_list<TMode> AModes) { *this = CreateWithArray(AModes); }
  constexpr TModeSet(TModeSetSet AModes) : FMode(AModes.GetBits()) {}

  constexpr void Init() { FMode = 0; }
  static constexpr TModeSet CreateWithArray(std::span<const TMode> AModes) {
    TModeSet Result;
    for (const TMode Mode : AModes) Result.Enable(Mode);
    return Result;
  }
  /// Every bit but those of the modes.
  static constexpr TModeSet CreateWithNotArray(std::span<const TMode> AModes) {
    TModeSet Result = CreateWithArray(AModes);
    Result.FMode = ~Result.FMode;
    return Result;
  }

  constexpr bool Contains(TMode AMode) const { return (FMode & BitOf(AMode)) != 0; }
  /// Whether every mode of the other set is in this one.
  constexpr bool Contains(TModeSet AMode) const { return (FMode & AMode.FMode) == AMode.FMode; }
  constexpr bool ContainsSomeMode(TModeSet AMode) const { return (FMode & AMode.FMode) != 0; }
  constexpr std::uint32_t GetCode() const { return FMode; }
  constexpr void Enable(TMode AMode) { FMode |= BitOf(AMode); }
  constexpr void Enable(TModeSet AMode) { FMode |= AMode.FMode; }
  constexpr void Disable(TMode AMode) { FMode &= ~BitOf(AMode); }
  constexpr void Disable(TModeSet AMode) { FMode &= ~AMode.FMode; }

 private:
  static constexpr std::uint32_t BitOf(TMode AMode) {
    return std::uint32_t{1} << static_cast<unsigned>(AMode);
  }
  static constexpr TModeSet CreateWithArray(std::initializer_list<TMode> AModes) {
    return CreateWithArray(std::span<const TMode>(AModes.begin(), AModes.size()));
  }

  std::uint32_t FMode = 0;
};

// ---------------------------------------------------------------- kinds of events

class INode;

/// A kind of event: its id among all kinds, its filter bit, its handler's type.
template <std::uint16_t AnId, TEventMask AMask, class THandler>
struct TEventKind {
  static constexpr std::uint16_t Id = AnId;
  static constexpr TEventMask Mask = AMask;
  using TEvent = THandler;
};

using TParentChangeEvent = TMethod<void(INode* ANode, INode* AnOldParent, INode* ANewParent)>;
using TDestroyingEvent = TMethod<void(INode* ANode)>;
using TPropertyChangeEvent = TMethod<void(INode* ANode,
                                          const std::string& APropertyName,
                                          const TValue& AnOldValue,
                                          const TValue& ANewValue)>;
using TNameChangeEvent =
    TMethod<void(INode* ANode, const std::string& AnOldName, const std::string& ANewName)>;

inline constexpr std::uint16_t DidMoveEventId = 0;
inline constexpr std::uint16_t WillMoveEventId = 1;
inline constexpr std::uint16_t SceneChangeEventId = 2;
inline constexpr std::uint16_t ParentChangeEventId = 3;
inline constexpr std::uint16_t DestroyingEventId = 4;
inline constexpr std::uint16_t PropertyChangeEventId = 5;
inline constexpr std::uint16_t ControlPointsChangeEventId = 6;
inline constexpr std::uint16_t NameChangeEventId = 7;
inline constexpr std::uint16_t MouseEnterEventId = 8;
inline constexpr std::uint16_t MouseExitEventId = 9;
inline constexpr std::uint16_t MouseMoveEventId = 10;
inline constexpr std::uint16_t MouseDownEventId = 11;
inline constexpr std::uint16_t MouseUpEventId = 12;
inline constexpr std::uint16_t RectChangeEventId = 13;

namespace EventKinds {
using ParentChange = TEventKind<ParentChangeEventId, 0x10, TParentChangeEvent>;
using Destroying = TEventKind<DestroyingEventId, 0x8, TDestroyingEvent>;
using PropertyChange = TEventKind<PropertyChangeEventId, 0x100, TPropertyChangeEvent>;
using NameChange = TEventKind<NameChangeEventId, 0x200, TNameChangeEvent>;
}  // namespace EventKinds

/// Declares, in an interface, how handlers of a kind are connected: added, removed (the first that
/// is equal), and removed by receiver. Nothing removes the handlers of a receiver that dies.
#define FENCING_CONNECTS(KIND)                                                \
  virtual void Connect##KIND(EventKinds::KIND::TEvent AnEvent) = 0;           \
  virtual void Disconnect##KIND(const EventKinds::KIND::TEvent& AnEvent) = 0; \
  virtual void Disconnect##KIND##Object(const TObject* AnObject) = 0;

// ---------------------------------------------------------------- IEntity

/// Something with a name and an identifier. Two interfaces are the same entity when `GetObject`
/// is the same.
class IEntity : public virtual IInterface {
 public:
  virtual const std::string& GetName() const = 0;
  /// A name that is equal to the letter changes nothing; any other is announced.
  virtual void SetName(const std::string& AName) = 0;
  /// The name that is shown.
  virtual std::string GetAlias() const = 0;
  virtual TGUID GetId() const = 0;
  /// A new random identifier.
  virtual void ReassignId() = 0;
  /// The identifier becomes all zero.
  virtual void InvalidateId() = 0;
  /// By name, letter case ignored: an unknown property is ignored, reads as the empty value, is
  /// not contained.
  virtual void SetProperty(std::string_view AName, const TValue& AValue) = 0;
  virtual TValue GetProperty(std::string_view AName) const = 0;
  virtual bool ContainsProperty(std::string_view AName) const = 0;
  /// Whether editors show a property.
  virtual bool AllowDesignProperty(std::string_view AName) const = 0;
  /// Asks the entity to read again what it has made of a value; whether it had.
  virtual bool InvalidatePropertyValue(const std::string& AValue) = 0;
  /// Leaves its parent.
  virtual void Detach() = 0;

 protected:
  ~IEntity() = default;
};

// ---------------------------------------------------------------- INode

using TNodes = std::vector<TRef<INode>>;
using TNames = std::vector<std::string>;

/// A node of a tree. A parent keeps its children; a child only looks at its parent. "Front" is
/// index 0: what is there is painted first, underneath its siblings. Names are compared with letter
/// case ignored. Nothing raises: what is not there answers nothing, -1 or false, or is ignored.
class INode : public virtual IEntity {
 public:
  /// From the root down to this node.
  virtual TNodes GetHierarchyPath() = 0;
  virtual std::int32_t GetChildCount() const = 0;
  /// The index is not checked.
  virtual TRef<INode> GetChildAt(std::int32_t AIndex) const = 0;
  /// The first child of a name.
  virtual TRef<INode> GetChild(std::string_view AName) const = 0;
  /// Appends a child, which leaves its former parent. Ignored: nothing, this node and its
  /// ancestors, and what is a child already.
  virtual void AddChild(const TRef<INode>& AChild) = 0;
  /// The same at the front.
  virtual void AddFrontChild(const TRef<INode>& AChild) = 0;
  /// The children but those in mode `Edit`.
  virtual TNodes GetChildren() const = 0;
  /// Replaces all children.
  virtual void SetChildren(const TNodes& AChildren) = 0;
  virtual bool RemoveChild(INode* AChild) = 0;
  /// A child, or a child of one of them, and so on.
  virtual bool RemoveDescendant(INode* ANode) = 0;
  /// From the last to the first.
  virtual void RemoveAllChilds() = 0;
  virtual bool ContainsChild(std::string_view AName) const = 0;
  virtual bool ContainsChild(const INode* ANode) const = 0;
  virtual std::int32_t GetChildIndex(std::string_view AName) const = 0;
  virtual std::int32_t GetChildIndex(const INode* ANode) const = 0;
  /// Moves a child, others keeping their order; whether it has moved.
  virtual bool SetChildIndex(INode* AChild, std::int32_t AIndex) = 0;
  /// To index 0; by names: in their order, before all others. Unknown names are skipped.
  virtual void MoveChildToFront(std::int32_t AIndex) = 0;
  virtual void MoveChildToFront(const TNames& ANames) = 0;
  /// To the last index; by names: in their order, after all others.
  virtual void MoveChildToBack(std::int32_t AIndex) = 0;
  virtual void MoveChildToBack(const TNames& ANames) = 0;
  /// The children of these names in this order, then the others in theirs.
  virtual void ReorderChildren(const TNames& ANames) = 0;
  virtual void SwapChildren(std::int32_t I, std::int32_t J) = 0;
  /// Nothing: leaves the parent. This node and what is below it are refused.
  virtual void SetParent(INode* AParent) = 0;
  virtual INode* GetParent() const = 0;
  /// The topmost ancestor, or this node.
  virtual INode* GetRootNode() = 0;
  virtual void SetMode(TModeSet AMode) = 0;
  /// Through `SetMode`.
  virtual void EnableModes(std::span<const TMode> AModes) = 0;
  virtual void DisableModes(std::span<const TMode> AModes) = 0;
  /// Changes the mode and nothing else: nobody is told, nothing repainted.
  virtual void EnableMode(TMode AMode) = 0;
  virtual void DisableMode(TMode AMode) = 0;
  virtual TModeSet GetMode() const = 0;

  FENCING_CONNECTS(PropertyChange)
  FENCING_CONNECTS(NameChange)
  FENCING_CONNECTS(Destroying)
  FENCING_CONNECTS(ParentChange)
  /// Removes every handler of a receiver, of any kind.
  virtual void DisconnectEventObject(const TObject* AnObject) = 0;

 protected:
  ~INode() = default;
};

// ---------------------------------------------------------------- TSceneRegistry

using TCreatedObjectEvent = TMethod<void(INode* ANewNode)>;

/// Announces every new node, once it is wholly constructed, and every change of a node's name.
class TSceneRegistry {
 public:
  static void Connect(TCreatedObjectEvent AnEvent);
  static void Disconnect(const TCreatedObjectEvent& AnEvent);
  static void Connect(TNameChangeEvent AnEvent);
  static void Disconnect(const TNameChangeEvent& AnEvent);
  static void Disconnect(const TObject* AnObject);
  static void EmitCreatedObject(INode* ANewNode);
  static void EmitChangedName(INode* ANode,
                              const std::string& AnOldName,
                              const std::string& ANewName);
};

}  // namespace System::Beacon::Fencing::Scene

namespace System {

template <>
struct TEnumNames<Beacon::Fencing::Scene::TMode> {
  static constexpr std::string_view Type = "TMode";
  static constexpr std::array<std::string_view, 3> Names{"Visible", "Edit", "Active"};
};
template <>
struct TInterfaceName<Beacon::Fencing::Scene::INode> {
  static constexpr std::string_view Value = "INode";
};

}  // namespace System
