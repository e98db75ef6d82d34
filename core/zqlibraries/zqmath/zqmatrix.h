#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbtypename.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

// Dense matrix of float or double, rows x cols, stored row by row.
//
// The numerics algorithms take points and directions as vectors: an n x 1 (or 1 x n) matrix whose
// dimension is the larger extent, addressed by one index. A set of n directions is an n x n matrix
// whose column i is direction i.
//
//     ZqMatrix<float> p = ZqMatrix<float>::Vector({10, -10});   // 2 x 1
//     ZqMatrix<float> xi = ZqMatrix<float>::Identity(2);         // directions (1,0) and (0,1)
//     p += 0.5f * xi.GetColumn(1);                               // p = (10, -9.5)
//     float s = p.GetSquaredLength();                            // 190.25
//
// Operations on matrices of unequal shape, or an index outside At's range, throw
// CbExceptionPreconditionViolation naming the operation ("ZqMatrix<float>::operator+").
// operator() and operator[] check their indices only in debug builds.
template <class T> class ZqMatrix
{
    static_assert(std::is_same_v<T, float> || std::is_same_v<T, double>, "ZqMatrix holds float or double");

public:
    using Scalar = T;

    // 0 x 0.
    ZqMatrix() = default;
    // rows x cols zeros.
    ZqMatrix(std::size_t rows, std::size_t cols) : m_rows(rows), m_cols(cols), m_data(rows * cols, T(0)) {}
    // rows x cols from exactly rows * cols values given row by row.
    ZqMatrix(std::size_t rows, std::size_t cols, std::initializer_list<T> rowMajor)
        : m_rows(rows), m_cols(cols), m_data(rowMajor)
    {
        if (m_data.size() != rows * cols)
            fail("ZqMatrix");
    }
    // Element-wise conversion from the other precision.
    template <class U>
    explicit ZqMatrix(const ZqMatrix<U>& other) : m_rows(other.GetRows()), m_cols(other.GetCols())
    {
        m_data.reserve(other.GetSize());
        for (std::size_t i = 0; i < other.GetSize(); ++i)
            m_data.push_back(static_cast<T>(other[i]));
    }

    static ZqMatrix Identity(std::size_t n)
    {
        ZqMatrix m(n, n);
        for (std::size_t i = 0; i < n; ++i)
            m(i, i) = T(1);
        return m;
    }
    // The column vector (values.size() x 1).
    static ZqMatrix Vector(std::initializer_list<T> values)
    {
        ZqMatrix m;
        m.m_rows = values.size();
        m.m_cols = 1;
        m.m_data = values;
        return m;
    }

    std::size_t GetRows() const { return m_rows; }
    std::size_t GetCols() const { return m_cols; }
    std::size_t GetSize() const { return m_data.size(); }
    bool IsEmpty() const { return m_data.empty(); }
    // One extent is 1 (a 1 x 1 matrix is a vector too).
    bool IsVector() const { return !IsEmpty() && (m_rows == 1 || m_cols == 1); }
    // The larger extent: the dimension of a vector.
    std::size_t GetDimension() const { return std::max(m_rows, m_cols); }

    // Resizes to rows x cols zeros.
    void Resize(std::size_t rows, std::size_t cols)
    {
        m_rows = rows;
        m_cols = cols;
        m_data.assign(rows * cols, T(0));
    }
    void Fill(T value) { std::fill(m_data.begin(), m_data.end(), value); }

    // Element access by row and column.
    T& operator()(std::size_t row, std::size_t col)
    {
        assert(row < m_rows && col < m_cols);
        return m_data[row * m_cols + col];
    }
    const T& operator()(std::size_t row, std::size_t col) const
    {
        assert(row < m_rows && col < m_cols);
        return m_data[row * m_cols + col];
    }
    // The same with the indices checked.
    T& At(std::size_t row, std::size_t col)
    {
        if (row >= m_rows || col >= m_cols)
            fail("At");
        return m_data[row * m_cols + col];
    }
    const T& At(std::size_t row, std::size_t col) const { return const_cast<ZqMatrix&>(*this).At(row, col); }
    // Element access by position in storage order; for vectors, element i.
    T& operator[](std::size_t index)
    {
        assert(index < m_data.size());
        return m_data[index];
    }
    const T& operator[](std::size_t index) const
    {
        assert(index < m_data.size());
        return m_data[index];
    }

    // Row access: the first of the row's GetCols() contiguous elements.
    T* GetRow(std::size_t row)
    {
        assert(row < m_rows);
        return m_data.data() + row * m_cols;
    }
    const T* GetRow(std::size_t row) const
    {
        assert(row < m_rows);
        return m_data.data() + row * m_cols;
    }
    T* GetData() { return m_data.data(); }
    const T* GetData() const { return m_data.data(); }

    // Column col as a GetRows() x 1 vector.
    ZqMatrix GetColumn(std::size_t col) const
    {
        if (col >= m_cols)
            fail("GetColumn");
        ZqMatrix column(m_rows, 1);
        for (std::size_t r = 0; r < m_rows; ++r)
            column.m_data[r] = (*this)(r, col);
        return column;
    }
    // Overwrites column col with a vector of dimension GetRows().
    void SetColumn(std::size_t col, const ZqMatrix& vector)
    {
        if (col >= m_cols || !(vector.IsVector() && vector.GetSize() == m_rows))
            fail("SetColumn");
        for (std::size_t r = 0; r < m_rows; ++r)
            (*this)(r, col) = vector.m_data[r];
    }

    ZqMatrix Transpose() const
    {
        ZqMatrix t(m_cols, m_rows);
        for (std::size_t r = 0; r < m_rows; ++r)
            for (std::size_t c = 0; c < m_cols; ++c)
                t(c, r) = (*this)(r, c);
        return t;
    }

    // Sum of the squared elements: the squared length of a vector, the squared Frobenius norm of a
    // matrix.
    T GetSquaredLength() const
    {
        T sum = T(0);
        for (T value : m_data)
            sum += value * value;
        return sum;
    }

    ZqMatrix& operator+=(const ZqMatrix& other)
    {
        requireSameShape(other, "operator+=");
        for (std::size_t i = 0; i < m_data.size(); ++i)
            m_data[i] += other.m_data[i];
        return *this;
    }
    ZqMatrix& operator-=(const ZqMatrix& other)
    {
        requireSameShape(other, "operator-=");
        for (std::size_t i = 0; i < m_data.size(); ++i)
            m_data[i] -= other.m_data[i];
        return *this;
    }
    ZqMatrix& operator*=(T factor)
    {
        for (T& value : m_data)
            value *= factor;
        return *this;
    }

    friend ZqMatrix operator+(ZqMatrix a, const ZqMatrix& b)
    {
        a.requireSameShape(b, "operator+");
        return a += b;
    }
    friend ZqMatrix operator-(ZqMatrix a, const ZqMatrix& b)
    {
        a.requireSameShape(b, "operator-");
        return a -= b;
    }
    friend ZqMatrix operator-(ZqMatrix a)
    {
        for (T& value : a.m_data)
            value = -value;
        return a;
    }
    friend ZqMatrix operator*(ZqMatrix a, T factor) { return a *= factor; }
    friend ZqMatrix operator*(T factor, ZqMatrix a) { return a *= factor; }
    // Matrix product: (n x k) * (k x m) = n x m.
    friend ZqMatrix operator*(const ZqMatrix& a, const ZqMatrix& b)
    {
        if (a.m_cols != b.m_rows)
            fail("operator*");
        ZqMatrix product(a.m_rows, b.m_cols);
        for (std::size_t r = 0; r < a.m_rows; ++r)
            for (std::size_t k = 0; k < a.m_cols; ++k)
            {
                const T factor = a(r, k);
                const T* row = b.GetRow(k);
                T* out = product.GetRow(r);
                for (std::size_t c = 0; c < b.m_cols; ++c)
                    out[c] += factor * row[c];
            }
        return product;
    }

    // Same shape and exactly equal elements.
    friend bool operator==(const ZqMatrix& a, const ZqMatrix& b)
    {
        return a.m_rows == b.m_rows && a.m_cols == b.m_cols && a.m_data == b.m_data;
    }

private:
    void requireSameShape(const ZqMatrix& other, const char* operation) const
    {
        if (m_rows != other.m_rows || m_cols != other.m_cols)
            fail(operation);
    }
    [[noreturn]] static void fail(const char* operation)
    {
        const std::string function =
            CbTypeNameTemplate("ZqMatrix", CbTypeName<T>::Get()) + "::" + std::string(operation);
        CB_THROW(CbExceptionPreconditionViolation, function.c_str());
    }

    std::size_t m_rows = 0;
    std::size_t m_cols = 0;
    std::vector<T> m_data;
};
