#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace TesselFX {

/// A typed key-value record. Keys are ordered by plain byte comparison. Each Add replaces an
/// earlier value of the same key. Not thread safe; GetKeys and ToString rebuild buffers owned by
/// the record, valid until the next call of the same operation or the record's destruction.
class CommonSettings {
  public:
    /// A value with its text form. Values are immutable and may be shared between records.
    class IValue {
      public:
        virtual ~IValue();
        /// The text form.
        virtual std::string GetStringValue() const;
        /// 0 int, 1 unsigned, 2 double, 3 string.
        virtual int GetValueType() const = 0;
        /// Byte comparison of the text forms.
        virtual bool IsEqual(const IValue& other) const;

      protected:
        explicit IValue(std::string text);
        std::string m_stringValue;
    };

    class IntValue : public IValue {
      public:
        explicit IntValue(int32_t value);
        int GetValueType() const override;
        int32_t GetValue() const { return m_value; }

      private:
        int32_t m_value;
    };

    class UintValue : public IValue {
      public:
        explicit UintValue(uint32_t value);
        int GetValueType() const override;
        uint32_t GetValue() const { return m_value; }

      private:
        uint32_t m_value;
    };

    class DoubleValue : public IValue {
      public:
        explicit DoubleValue(double value);
        int GetValueType() const override;
        /// Numeric comparison against another double value, text comparison otherwise.
        virtual bool IsEqualValue(const IValue& other) const;
        double GetValue() const { return m_value; }

      private:
        double m_value;
    };

    class StringValue : public IValue {
      public:
        explicit StringValue(const std::string& value);
        int GetValueType() const override;
        const std::string& GetValue() const { return m_value; }

      private:
        std::string m_value;
    };

    static constexpr int kIntValue = 0;
    static constexpr int kUintValue = 1;
    static constexpr int kDoubleValue = 2;
    static constexpr int kStringValue = 3;

    CommonSettings();
    virtual ~CommonSettings();
    CommonSettings(const CommonSettings&) = delete;
    CommonSettings& operator=(const CommonSettings&) = delete;

    bool AddInt(const std::string& key, int32_t value);
    bool AddUint(const std::string& key, uint32_t value);
    bool AddDouble(const std::string& key, double value);
    bool AddString(const std::string& key, const std::string& value);

    /// True and the value when the key exists with exactly that kind; out untouched otherwise.
    bool GetInt(const std::string& key, int32_t& out) const;
    bool GetUint(const std::string& key, uint32_t& out) const;
    bool GetDouble(const std::string& key, double& out) const;
    /// Copies at most size-1 bytes of the text form of a value of any kind and terminates the
    /// buffer at its last byte. Returns min(size, text length), or 0xFFFFFFFF for an absent key.
    uint32_t GetString(const std::string& key, char* buffer, uint32_t size) const;

    bool Remove(const std::string& key);
    bool Clear();
    bool Contains(const std::string& key) const;

    /// The keys in map order as zero-terminated copies owned by the record; valid until the
    /// next GetKeys or the record's destruction. count receives their number.
    const char* const* GetKeys(uint32_t& count);

    /// Makes other hold shared references to this record's values, replacing its own. False if
    /// other is missing; true without effect if other is this record.
    bool CopyTo(CommonSettings* other) const;

    /// "key=value;" per key in order; the text stays valid until the next ToString.
    const std::string& ToString();

    /// Whether both records describe the same thing: keys present on one side only never
    /// disqualify, and "AUTO" on either side matches any value. False for a missing other.
    bool Matches(const CommonSettings* other) const;

    /// The value under key, or null.
    std::shared_ptr<IValue> GetValue(const std::string& key) const;

  private:
    bool Put(const std::string& key, std::shared_ptr<IValue> value);

    std::map<std::string, std::shared_ptr<IValue>> m_values;
    std::vector<std::unique_ptr<char[]>> m_keyArray;
    std::vector<const char*> m_keyPointers;
    uint32_t m_keyCount = 0;
    std::string m_text;
};

}  // namespace TesselFX
