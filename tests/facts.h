// Several facts in one statement, which says the one that does not hold.
#ifndef QEL_TESTS_FACTS_H
#define QEL_TESTS_FACTS_H

#include <gtest/gtest.h>

/// EXPECT_TRUE and ASSERT_TRUE for each of some facts, in order up to the first that is false, which is printed.
/// @{
#define EXPECT_ALL(...) GTEST_ASSERT_(QEL_FIRST_FALSE(__VA_ARGS__), GTEST_NONFATAL_FAILURE_)
#define ASSERT_ALL(...) GTEST_ASSERT_(QEL_FIRST_FALSE(__VA_ARGS__), GTEST_FATAL_FAILURE_)
/// @}

// "not a ? failure : not b ? failure : success", by a macro that is expanded again behind each fact.
#define QEL_FIRST_FALSE(...) QEL_EXPAND(QEL_FACTS(__VA_ARGS__))::testing::AssertionSuccess()
#define QEL_FACTS(fact, ...) QEL_FACT(fact) __VA_OPT__(QEL_MORE_FACTS QEL_DEFERRED(__VA_ARGS__))
#define QEL_FACT(fact) !(fact) ? ::testing::AssertionFailure() << "This is false: " << #fact:
#define QEL_MORE_FACTS() QEL_FACTS
#define QEL_DEFERRED ()
#define QEL_EXPAND(...) QEL_EXPAND_4(QEL_EXPAND_4(QEL_EXPAND_4(__VA_ARGS__)))
#define QEL_EXPAND_4(...) QEL_EXPAND_2(QEL_EXPAND_2(QEL_EXPAND_2(__VA_ARGS__)))
#define QEL_EXPAND_2(...) __VA_ARGS__

#endif
