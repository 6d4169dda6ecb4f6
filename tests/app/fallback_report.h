// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::tests {

/// The whole report where no Hebrew layout is enabled.
inline constexpr const char* kFallbackReport = R"report(source: fallback table
current layout is Hebrew: false

== toHebrew (68)
  " -> ״
  & -> ₪
  ' -> ,
  ( -> )
  ) -> (
  , -> ת
  . -> ץ
  / -> .
  ; -> ף
  < -> >
  > -> <
  A -> ש
  B -> נ
  C -> ב
  D -> ג
  E -> ק
  F -> כ
  G -> ע
  H -> י
  I -> ן
  J -> ח
  K -> ל
  L -> ך
  M -> צ
  N -> מ
  O -> ם
  P -> פ
  Q -> /
  R -> ר
  S -> ד
  T -> א
  U -> ו
  V -> ה
  W -> ׳
  X -> ס
  Y -> ט
  Z -> ז
  [ -> ]
  ] -> [
  ` -> ;
  a -> ש
  b -> נ
  c -> ב
  d -> ג
  e -> ק
  f -> כ
  g -> ע
  h -> י
  i -> ן
  j -> ח
  k -> ל
  l -> ך
  m -> צ
  n -> מ
  o -> ם
  p -> פ
  q -> /
  r -> ר
  s -> ד
  t -> א
  u -> ו
  v -> ה
  w -> ׳
  x -> ס
  y -> ט
  z -> ז
  { -> }
  } -> {

== toEnglish (42)
  ( -> )
  ) -> (
  , -> '
  . -> /
  / -> q
  ; -> `
  < -> >
  > -> <
  [ -> ]
  ] -> [
  { -> }
  } -> {
  א -> t
  ב -> c
  ג -> d
  ד -> s
  ה -> v
  ו -> u
  ז -> z
  ח -> j
  ט -> y
  י -> h
  ך -> l
  כ -> f
  ל -> k
  ם -> o
  מ -> n
  ן -> i
  נ -> b
  ס -> x
  ע -> g
  ף -> ;
  פ -> p
  ץ -> .
  צ -> m
  ק -> e
  ר -> r
  ש -> a
  ת -> ,
  ׳ -> w
  ״ -> "
  ₪ -> &

== round trip check (en -> he -> en)
  all good

== conversions
  OK  [en] "akuo nv akunl" -> "שלום מה שלומך"
  OK  [he] "יקךךם" -> "hello"
  OK  [he] "hello, world." -> "יקךךםת ׳םרךגץ"
  OK  [he] "יקךךםת ׳םרךגץ" -> "hello, world."
  OK  [en] "Akuo" -> "שלום"
  OK  [en] "היי akuo nv" -> "היי שלום מה"
  OK  [he] "היי akuo nv" -> "vhh akuo nv"
  OK  [he] "שלום 123" -> "akuo 123"
  OK  [en] "nv akunl?" -> "מה שלומך?"
  OK  [en] "(akuo)" -> ")שלום("

ALL PASSED
)report";

}  // namespace lexwend::tests
