// Carries the precompiled headers that all test programs share.
