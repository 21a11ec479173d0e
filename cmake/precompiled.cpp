// Only there so that the precompiled headers have a target to belong to.
