<?xml version="1.0"?>
<?php
// a comment: don't read "quotes"; it ends with ?> the block
<?php # another one, 'it''s' ?><b>text</b>
<?php
/* a comment
   over "lines", isn't it ?> no */
namespace Shop;
require_once 'lib/order.php';
include("more.inc");
define('LIMIT', 1000 + 0x1F + 017 + 3.14 + .5 + 1e10);
abstract class Order extends Base implements Countable {
    const QUOTE = "\"", APOSTROPHE = '\'', PATH = 'C:\\';
    private static $count = 0; public $name = "O'Brien"; protected $note = 'say "hi"';
    function __construct($id, array $lines = null) {
        $this->id = (int) $id; self::$count++; parent::__construct();
        $this->text = "it's $id, {$this->name} \$5 \\ // no comment # nor here";
        $this->sql = "select *
            from orders -- $id
            where name = 'it''s'";
        $this->single = 'begins $here
            ends "here"';
    }
    public function total(): float {
        foreach ($this->lines as $key => $line) { if (!$line) continue; else break; }
        while (true) { switch ($key) { case 1: return 1.5; default: throw new Error('x'); } }
        $x = $a / $b / 2; $y = $z ? 'a' : "b"; /* c */ $w = &$y; $v = null; // end
        return false;
    }
}
echo "done", '?>', "<b>";
?>
<p class="<?php echo $class ?>" id='<?= "it's" ?>' <?php if ($x) echo 'checked' ?>>Hi <?= $name ?>!</p>
<a href="page.php?id=<?php echo $id ?>&amp;n=1">x < y</a><? echo "short" ?>
<script>
var id = <?php echo "it's" ?>, text = 'x'; // don't
</script>
<textarea title="spread
over <?php echo $lines ?> lines">text</textarea>
<!DOCTYPE html PUBLIC "-//W3C//DTD HTML 4.01//EN"
  "http://www.w3.org/TR/html4/strict.dtd">
<!-- A comment with <b>tags</b>, "quotes" and it's
     several lines; -- two dashes don't close it
     <script> opens nothing -->
<html lang="en">
<head>
<title>Orders &amp; prices &lt; 100 &#8364; &nbsp; AT&T; R&D & more</title>
<link rel=stylesheet href=/style.css>
<script type="text/javascript" src="a.js"></script>
<SCRIPT LANGUAGE="JavaScript">
// don't read "quotes" in here
/* a comment
   it's over here: </b> */ var after = 1;
var text = "it's <b>no tag</b> // no comment", other = 'say "hi" /* text */';
var escaped = "a \"quoted\" one \\", apostrophe = 'it\'s', empty = "" + '';
var number = 0x1F + 017 + 42 + .5 + 1. + 1.5e-3 + 2E10;
var long = "begins here \
and ends here";
var re = /["']/g, half = number / 2 / 3, found = text.match(/it's \/ "x/i); // 'done'
function show(node, on) {
    if (node == null || !on && true) return false;
    for (var i = 0; i < node.length; i++) { switch (i) { case 0: break; default: continue; } }
    try { node.style["color"] = on ? 'red' : "blue"; } catch (e) { throw new Error("bad"); }
    return typeof node in this; /**/
}
var open = "never closed
var next = 1; // </script in a comment
var last = 'never closed
</SCRIPT>
<style>p > a { color: red; content: "it's"; }</style>
</head>
<body bgcolor="#ffffff" onload='show("all", 1)' text=black link>
<h1 class="big red">Title</h1><!-- short --><p>Don't "quote" me.</p>
<a href="http://example.org/?a=1&amp;b=2" title="a > b" target='_top'>It's <b>bold</b>, <i>italic</i></a>
<img src="a.png" alt="two
lines" width=10 height = "20"/><br/>
<table border=1><tr><td align = center nowrap>1</td><td><unknown x="y">2</unknown></td></tr></table>
<input value="it's" name='say "hi"' disabled><hr size=1 / >
<p
   id="spread"
   class=it's-odd
>Text < 5 and > 3, a<b and c>d, <> <3 </ p>
<my-element data-x="1"/><svg:rect x='1'></svg:rect>
<COMMENT>An old comment: <b>text</b>
 it's closed here</COMMENT> and text
<comment>short</comment><script>/* short */ x = "</b>"; // it's over</script><b>bold</b>
<a href="never closed>text</a>
"> closed here
<ul><li>one<li>two</ul>&unclosed entity
<?php
$open = "never closed
$it = 1;
