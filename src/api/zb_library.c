/* The shared library is the zb_api static library linked whole; this unit only gives the
 * target a source of its own. */
